#include <errno.h>
#include <sys/wait.h>

#include <TQFoundation/platform/files/ExternalTool.h>
#include <TQFoundation/platform/files/FileServices.h>

#include "support/FailingAllocations.h"
#include "support/TemporaryDirectory.h"

namespace {

TEST(TemporaryFolderFault, EveryAllocationMayFailAlsoInItsDestructor) {
  const test::TemporaryDirectory directory;
  const char* const before = ::getenv("TMPDIR");
  const std::string restored = before != nullptr ? before : "";
  ::setenv("TMPDIR", directory.path(".").c_str(), 1);
  test::failEachAllocation([] {
    const Ref<TemporaryFolder> folder = TemporaryFolder::temporaryFolder();
    return folder != nullptr && folder->urlForName("a") != nullptr;
  });
  restored.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", restored.c_str(), 1);
}

TEST(ExternalToolFault, EveryAllocationMayFailAndNoChildIsLeft) {
  struct NoChild {
    ~NoChild() {
      EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
      EXPECT_EQ(errno, ECHILD);
    }
  };
  test::failEachAllocation([] {
    const NoChild afterwards;
    ExternalTool tool;
    tool.program = "sh";
    tool.arguments = {"-c", "echo a line of output"};
    const auto result = runExternalTool(tool);
    return result && result->output->view() == "a line of output\n";
  });
}

}  // namespace
