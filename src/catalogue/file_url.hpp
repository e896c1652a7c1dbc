#pragma once

#include <string>
#include <string_view>

namespace tidewell {

/// A location on disk, kept as its absolute path. Its text form is the file URL that the catalogue shows and
/// exports: "file://" followed by the percent-encoded path.
struct FileUrl {
    std::string path;

    /// "file://" + the path with every byte outside the URL path alphabet (unreserved, sub-delims, ':', '@', '/')
    /// written as %XX in upper-case hex. A path with a space gives "%20"; UTF-8 names are encoded byte by byte.
    [[nodiscard]] std::string text() const;

    /// The last path component ("" for "/" or an empty path). Trailing slashes are ignored.
    [[nodiscard]] std::string lastPathComponent() const;

    /// This location with one more component appended ("a" + "b" gives "a/b"; "a/" + "b" gives "a/b").
    [[nodiscard]] FileUrl appending(std::string_view component) const;

    friend bool operator==(const FileUrl&, const FileUrl&) = default;
};

/// Percent-encodes a path for a file URL (the path part of FileUrl::text()).
[[nodiscard]] std::string percentEncodePath(std::string_view path);

/// Joins two path texts with exactly one slash between them.
[[nodiscard]] std::string joinPath(std::string_view base, std::string_view component);

} // namespace tidewell
