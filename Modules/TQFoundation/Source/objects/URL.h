#pragma once

/// @file URL.h
/// Locations of files, and other URLs.

#include <string>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// The location of a file, or any other URL. Immutable. Threads: any.
///
/// File names are bytes and are compared byte by byte: case is not folded, text is not normalised,
/// and links are not followed.
class TQ_EXPORT URL final : public Subclass<URL> {
 public:
  static constexpr std::string_view className = "URL";
  static constexpr std::string_view codingName = "NSURL";

  /// Returns the URL of the file at `path`, whose bytes are kept (a "%20" in it is three
  /// characters). A relative path is appended to the current working directory; if that was
  /// removed, the path stays relative, and absoluteString() is no valid URL. An empty path stays
  /// empty: isFileURL() is true, but no file has this URL.
  [[nodiscard]] static Ref<URL> fileURLWithPath(std::string_view path);

  /// Parses a URL. `text` is a plain path as above, a "file:" URL, or a URL of another scheme. A
  /// "file:" URL has its escapes decoded, and its query and fragment removed; its host must be
  /// empty or "localhost". The text of another scheme is kept byte by byte, and the URL has no
  /// path. URLResolution.h resolves references that are relative to a base.
  /// @return null for a "file:" URL with another host, an invalid escape or an escaped NUL
  [[nodiscard]] static Ref<URL> URLWithString(std::string_view text);

  /// Returns true if it has a path, even an empty one; false for a URL of another scheme.
  [[nodiscard]] bool isFileURL() const noexcept { return foreign_.empty(); }

  /// Returns the file's path; empty if the URL is not a file's.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Returns the text after the last "/", without a trailing "/"; "/" for the root.
  /// Valid while the URL lives.
  [[nodiscard]] std::string_view lastPathComponent() const noexcept;

  /// Returns "file:///a%20b", in plain ASCII, or the text of a URL of another scheme.
  [[nodiscard]] std::string absoluteString() const;

  /// Returns true if both have the same path, or the same text.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Returns absoluteString().
  [[nodiscard]] std::string description() const override { return absoluteString(); }

 private:
  URL(std::string path, std::string foreign)
  noexcept : path_(std::move(path)), foreign_(std::move(foreign)) {}

  std::string path_;
  std::string foreign_;  // the whole text of a URL that is not a file's
};

}  // namespace tq
