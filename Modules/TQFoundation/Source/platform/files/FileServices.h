#pragma once

/// @file FileServices.h
/// Atomic replacement of files, unique files, temporary folders.

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// Replaces the content of a file with `bytes`, or creates the file.
///
/// The bytes are written to a new file in the same folder, flushed to the disk, and renamed over
/// the old file. A reader finds either the old or the new content, complete, even after a power
/// failure. If the URL is a symbolic link, the link stays and its target is replaced; a link
/// without a target is an error. Other hard links of the old file keep the old content. Any thread.
///
/// The new file keeps the old one's owner, group, permissions, ACL and extended attributes, and has
/// them before it gets its name. An owner or a group that this process may not set is not kept, and
/// neither are attributes that it may not read or set. This never grants access to users who had
/// none: without the group, the group and all others get only what both had, so 0640 becomes 0600,
/// and 0664 becomes 0644. Set-id bits are kept only if owner and group are.
///
/// A killed process leaves no file behind, unless the file system does not support files without a
/// name (network file systems), or something else locks the folder, such as another replacement:
/// then a file ".tq-" with a number may stay. ".tq-replacement" is a reserved name: a file of that
/// name is removed.
///
/// @return false on failure, with an error of CocoaErrorDomain (see FileHandle). The old content is
///         unchanged then, unless only the folder could not be flushed to the disk.
[[nodiscard]] TQ_EXPORT bool replaceFile(const URL& url, std::span<const std::byte> bytes,
                                         Ref<Error>* error = nullptr);

/// Creates an empty file with this name, or with the first free name after it: "Plan.svg",
/// "Plan 2.svg". A trailing "/" is ignored; "." and ".." are errors. Creating the file and checking
/// that its name is free is one atomic step. Any thread.
///
/// @return its location; null, with an error, on failure
[[nodiscard]] TQ_EXPORT Ref<URL> makeUniqueFile(const URL& wanted, Ref<Error>* error = nullptr);

/// A temporary folder in $TMPDIR, or in /tmp, that only its owner can access. The destructor
/// removes the folder and its content, as far as the system permits. Links in it are removed, not
/// followed.
///
/// Threads: one at a time.
class TQ_EXPORT TemporaryFolder final : public Subclass<TemporaryFolder> {
 public:
  static constexpr std::string_view className = "TemporaryFolder";

  /// Creates a folder. @return null, with an error, on failure
  [[nodiscard]] static Ref<TemporaryFolder> temporaryFolder(Ref<Error>* error = nullptr);
  ~TemporaryFolder() override;

  /// The location of the folder.
  [[nodiscard]] const URL& url() const noexcept { return *url_; }
  /// Returns the location of an entry of the folder, or of one of its subfolders: "a/b". Symbolic
  /// links are not resolved.
  /// @return null if the name would leave the folder: it is empty or absolute, or contains ".." as
  ///         a component, or a NUL
  [[nodiscard]] Ref<URL> urlForName(std::string_view name) const;

 private:
  explicit TemporaryFolder(Ref<URL> url) noexcept : url_(std::move(url)) {}

  Ref<URL> url_;
};

}  // namespace tq
