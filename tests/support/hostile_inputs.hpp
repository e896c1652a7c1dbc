#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell::testing {

// Inputs made to hurt a reader of outside data: word lists and "Local State" files past every limit.

/// An XML property list of `levels` arrays nested in each other, a word at the bottom.
[[nodiscard]] std::string nestedXmlPlist(std::size_t levels);

/// One object of a binary property list: an ASCII string, or an array of references to other objects.
struct BinaryObject {
    std::string text;
    std::vector<std::uint32_t> references;
    bool isArray = false;
};

/// A binary property list of these objects, `top` its root, written as the format lays it out (header, objects,
/// offset table, trailer), with 4-byte offsets and references.
[[nodiscard]] std::string binaryPlist(const std::vector<BinaryObject>& objects, std::uint32_t top = 0);

/// Binary lists of a few hundred bytes that are not what they seem: an array that holds itself, arrays nested
/// `levels` deep, and `levels` arrays each holding the next one twice (2^levels values once expanded).
[[nodiscard]] std::string cyclicBinaryPlist();
[[nodiscard]] std::string deepBinaryPlist(std::size_t levels);
[[nodiscard]] std::string doublingBinaryPlist(std::size_t levels);

/// Random lower-case words of 8 to 40 letters, one per line, until the text is `bytes` long.
[[nodiscard]] std::string randomWordLines(std::size_t bytes, std::uint32_t seed);

/// A "Local State" text naming the profile "Default" ("Person 1") and then `hostile` profile keys that climb out of
/// Chrome's folder: by ".." cut short with a NUL byte ("..\u0000/" `climbs` times, then `target`, a relative path),
/// by "..", by a slash, empty, or absolute. Written by hand: a JSON library that keeps member order would take
/// minutes for it.
[[nodiscard]] std::string hostileLocalState(std::size_t hostile, std::size_t climbs, std::string_view target);

} // namespace tidewell::testing
