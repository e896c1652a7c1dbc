#pragma once

#include <functional>
#include <map>
#include <string>

namespace tidewell::testing {

/// Tells a tree walk to leave an entry out, with everything it holds; given the entry's path relative to the root.
using SkipEntry = std::function<bool(const std::string& relativePath)>;

/// What a tree holds, for telling whether anything in it changed: each entry's path relative to root mapped to
/// its kind, permission bits and owner, and a checksum of what it holds (a file's bytes, a link's target, a
/// device's numbers). Links are never followed and FIFOs, sockets and devices never opened, so any disk can be
/// looked at without blocking; names are taken byte for byte. The walk is iterative and keeps one descriptor per
/// level. A folder that cannot be opened is recorded as such. A root that cannot be opened gives an empty map.
[[nodiscard]] std::map<std::string, std::string> treeChecksums(const std::string& root, const SkipEntry& skip = {});

/// The entries that differ between two results of treeChecksums, one line each ("changed", "gone", "new"), or ""
/// when none does: a failure message that names what changed instead of printing two whole trees.
[[nodiscard]] std::string treeDifferences(const std::map<std::string, std::string>& before,
                                          const std::map<std::string, std::string>& after);

} // namespace tidewell::testing
