#pragma once

/// @file URLResolution.h
/// Resolution of relative URL references against a base.

#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// Returns the URL that `text` refers to, seen from `relativeToURL`: "../c" seen from
/// "http://h/a/b/d" is "http://h/a/c". Without a base it is the same as URL::URLWithString(text).
///
/// Both are encoded URLs: their escapes stay, with capital letters ("%2F"), except those of
/// letters, digits and "-._~". In the result,
/// - dot segments are removed, also if `text` has a scheme of its own. Those between escaped
///   slashes of a "file:" URL stay, although its path has plain slashes there;
/// - spaces, characters that are not ASCII, and each "%" that begins no escape, are escaped. The
///   name of a computer that is not ASCII becomes "xn--…";
/// - an empty port is dropped with its colon;
/// - white space around `text`, and white space within it other than spaces, is removed.
///
/// @param relativeToURL  a URL with a hierarchical path, or null. "mailto:a" has none: seen from
///                       there, "b" is "mailto:/b".
/// @return without a base, what URL::URLWithString() returns. With a base, null if
///         - either contains a NUL, or a port that is not a number up to 65535;
///         - either has a host that contains a semicolon, "%00" or escapes that are not UTF-8, that
///           begins with "[" but is no IPv6 address in brackets, or that is an IP address with
///           escapes, except the "%25" before a zone of letters, digits and "-._~" ("::" has none);
///         - the result has no host and a path that begins with "//";
///         - the result is a "file:" URL that URL::URLWithString() refuses
/// Threads: any.
/// Source: RFC 3986, section 5.
[[nodiscard]] TQ_EXPORT Ref<URL> URLWithString(std::string_view text, const URL* relativeToURL);

}  // namespace tq
