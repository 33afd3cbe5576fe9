#pragma once

/// @file URL.h
/// Where files are.

#include <string>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A location, nearly always a file's. Threads: any; immutable.
///
/// File names are bytes, compared as they stand: no case folding, no normalisation, links are not
/// followed.
class TQ_EXPORT URL final : public Subclass<URL> {
 public:
  static constexpr std::string_view className = "URL";
  static constexpr std::string_view codingName = "NSURL";

  /// The file at `path`, taken byte for byte (a "%20" in it is three characters). A relative path
  /// is put behind the working directory of this moment; an empty one stays empty and leads
  /// nowhere.
  [[nodiscard]] static Ref<URL> fileURLWithPath(std::string_view path);

  /// A plain path as above, a "file:" URL (its escapes decoded; no host, or "localhost"; files have
  /// no query and no fragment, which are left out), or a URL of another scheme, which is kept as it
  /// is and has no path.
  /// @return none for a "file:" URL with a foreign host, a broken escape or an escaped NUL
  [[nodiscard]] static Ref<URL> URLWithString(std::string_view text);

  /// `text` seen from `base`, as links are (RFC 3986, 5.2): "c" replaces what follows the last "/"
  /// of the base's path, "/c" the path, "//host/c" the host too; "?query", "#fragment" and "" keep
  /// the path. Dots ("../c") are kept for whoever opens it. Without a base the same as above.
  [[nodiscard]] static Ref<URL> URLWithString(std::string_view text, const URL* relativeToURL);

  /// True when it names a file or folder of this system.
  [[nodiscard]] bool isFileURL() const noexcept { return foreign_.empty(); }

  /// The file's path; empty for a URL that is not a file's.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// What follows the last "/" (a trailing one aside); "/" for the root.
  [[nodiscard]] std::string_view lastPathComponent() const noexcept;

  /// "file:///a%20b", or the text of a URL of another scheme. Plain ASCII for files.
  [[nodiscard]] std::string absoluteString() const;

  /// Same location, spelled the same way.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// absoluteString().
  [[nodiscard]] std::string description() const override { return absoluteString(); }

 private:
  URL(std::string path, std::string foreign)
  noexcept : path_(std::move(path)), foreign_(std::move(foreign)) {}

  std::string path_;
  std::string foreign_;  // the whole text of a URL that is not a file's
};

}  // namespace tq
