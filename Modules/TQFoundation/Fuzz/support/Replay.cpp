// TQFuzzReplay <target> <folder>: runs a fuzz target with each file of the folder.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>
#include <vector>

using Target = int(const std::uint8_t* data, std::size_t size);

#define TQ_FUZZ_TARGET(name) extern "C" Target fuzz##name;
#include "Targets.h"
#undef TQ_FUZZ_TARGET

namespace {

struct Named {
  std::string_view name;
  Target* target;
};

#define TQ_FUZZ_TARGET(name) {#name, fuzz##name},
constexpr Named kTargets[] = {
#include "Targets.h"
};
#undef TQ_FUZZ_TARGET

void feed(Target& target, const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  // An exact copy, so that the sanitizers notice reads past the end.
  const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
  target(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  for (const auto& [name, target] : kTargets) {
    if (name != argv[1]) continue;
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
      feed(*target, entry.path());
      ++count;
    }
    std::cout << count << " inputs\n";
    return count > 0 ? 0 : 1;
  }
  std::cerr << "unknown target " << argv[1] << '\n';
  return 2;
}
