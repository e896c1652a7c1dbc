#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// A location on disk, kept as its absolute path. Its text form is the file URL that the catalogue shows and
/// exports: "file://" followed by the percent-encoded path.
struct FileUrl {
    std::string path;
    /// The folder, below the granted folder, that removing this location must stay strictly inside: a Chrome or
    /// Firefox extension row's own extensions folder. Empty for every other location, which the granted folder
    /// alone bounds. Not part of the text form: the catalogue shows and exports the location as before.
    std::string within = {};

    /// "file://" + the path with every byte outside the URL path alphabet (unreserved, sub-delims, ':', '@', '/')
    /// written as %XX in upper-case hex. A path with a space gives "%20"; UTF-8 names are encoded byte by byte.
    [[nodiscard]] std::string text() const;

    /// The last path component ("" for "/" or an empty path). Trailing slashes are ignored.
    [[nodiscard]] std::string lastPathComponent() const;

    /// This location with one more component appended ("a" + "b" gives "a/b"; "a/" + "b" gives "a/b"); the new
    /// location has no `within` of its own.
    [[nodiscard]] FileUrl appending(std::string_view component) const;

    friend bool operator==(const FileUrl&, const FileUrl&) = default;
};

/// Locations in order: an item's list, a folder's entries.
using UrlList = std::vector<FileUrl>;

/// Percent-encodes a path for a file URL (the path part of FileUrl::text()).
[[nodiscard]] std::string percentEncodePath(std::string_view path);

/// Joins two path texts with exactly one slash between them.
[[nodiscard]] std::string joinPath(std::string_view base, std::string_view component);

/// Whether a name taken from another program's data (a profile key, a folder entry, a part of a recorded
/// location) can stand as one component of a path: not empty, not "." or "..", and holding neither "/" nor a NUL
/// byte. A name that fails names no place Tidewell may go; what it names is left out.
[[nodiscard]] bool isSingleComponent(std::string_view name);

/// The components of an absolute path taken from another program's data, when every one of them passes
/// isSingleComponent: "/a/b" gives {"a", "b"}. Nothing for a relative path, "/", or a path with an empty ("//",
/// a trailing "/"), "." or ".." component or a NUL byte anywhere: such a path is not taken for a place at all.
[[nodiscard]] std::optional<std::vector<std::string>> strictComponents(std::string_view path);

} // namespace tidewell
