#pragma once

/// @file FileServices.h
/// Files replaced safely, files and folders of one's own.

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// Makes `bytes` the content of the file, new or there already: they are written to a file beside
/// it, brought to the disk, and put in its place in one step. Whoever opens the file, even after a
/// power cut, finds the old content or the new one, whole. Permissions are kept,
/// also while it is written, and a symbolic link stays one: the file that it leads to is replaced.
/// Any thread.
///
/// @return false, with an error of CocoaErrorDomain (as FileHandle's), when something failed; the
///         old content stands then, unless only the folder's entry could not be brought to the disk
[[nodiscard]] TQ_EXPORT bool replaceFile(const URL& url, std::span<const std::byte> bytes,
                                         Ref<Error>* error = nullptr);

/// Makes an empty file of this name (a "/" behind it aside; "." and ".." are none), or of the first
/// free one after it: "Plan.svg", "Plan 2.svg". The file is made in the same step in which the name
/// is found to be free. Any thread.
/// @return its location; none, with an error, on failure
[[nodiscard]] TQ_EXPORT Ref<URL> makeUniqueFile(const URL& wanted, Ref<Error>* error = nullptr);

/// A folder of one's own, for the user alone, below $TMPDIR or else /tmp. It goes with everything
/// in it; links in it are removed, not followed. Threads: one at a time.
class TQ_EXPORT TemporaryFolder final : public Subclass<TemporaryFolder> {
 public:
  static constexpr std::string_view className = "TemporaryFolder";

  /// @return none, with an error, on failure
  [[nodiscard]] static Ref<TemporaryFolder> temporaryFolder(Ref<Error>* error = nullptr);
  ~TemporaryFolder() override;

  /// Where it is.
  [[nodiscard]] const URL& url() const noexcept { return *url_; }
  /// A location in the folder.
  [[nodiscard]] Ref<URL> urlForName(std::string_view name) const;

 private:
  explicit TemporaryFolder(Ref<URL> url) noexcept : url_(std::move(url)) {}

  Ref<URL> url_;
};

}  // namespace tq
