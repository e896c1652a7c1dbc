#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// `adultWords`: the URL fragments whose visits the history purge removes, in list order. Shared read-only by
/// the purge tasks that use it; a holder that loads a new list replaces the pointer, never the contents.
using AdultWords = std::shared_ptr<const std::vector<std::string>>;

/// The file name of the shipped word list.
inline constexpr std::string_view kAdultWordFile = "adultWord.plist";

/// The strings of a property list (XML or binary) whose root is an array, in order; entries that are not strings
/// are passed over, and a string holding a NUL byte counts up to it. Nothing when the data is not a property list
/// or its root is not an array.
[[nodiscard]] std::optional<std::vector<std::string>> readWordListPlist(std::string_view contents);

/// The words of a word list given by hand: a property list when it starts like one ("bplist", or "<?xml",
/// "<!DOCTYPE" or "<plist" after white space), read as readWordListPlist does; otherwise text with one word per
/// line, where a line ends at "\n" or "\r\n" and empty lines are passed over (an empty word would match every
/// visit). Nothing when it is a property list that is not an array.
[[nodiscard]] std::optional<std::vector<std::string>> readWordsText(std::string_view contents);

/// readWordsText of a file; nothing also when the file cannot be read.
[[nodiscard]] std::optional<std::vector<std::string>> readWordsFile(const std::string& path);

/// The shipped word list, found next to the running program or in its installed data folder. A missing or
/// unreadable list gives no words: nothing matches, and the purge routines still run and log.
[[nodiscard]] AdultWords loadAdultWords();

/// Wraps a list for sharing.
[[nodiscard]] AdultWords makeAdultWords(std::vector<std::string> words);

} // namespace tidewell
