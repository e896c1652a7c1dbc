#pragma once

#include <map>
#include <string>
#include <vector>

namespace tidewell::testing {

/// The adult-history purge written the plain way, as the reference the fast one must agree with for plain words
/// (ASCII, without "%", "_" or "'", which this one would take as SQL): for each word one query
/// "SELECT * FROM <table> WHERE url LIKE '%<word>%'" made by pasting the word in, each row's column 0 read as a
/// 64-bit integer, then for each id found one "DELETE FROM <table> WHERE id = <id>" on its own. Opens the
/// database by its file URL.
void literalPurge(const std::string& databasePath, const std::string& table, const std::vector<std::string>& words);

/// Every row of a table, each column given as SQL's quote() shows it, in rowid order.
[[nodiscard]] std::vector<std::string> tableDump(const std::string& databasePath, const std::string& table);

/// What a tree holds, for telling whether anything in it changed: each entry's path relative to root, mapped to
/// its kind and contents (a file's bytes, a link's target). Links are not followed.
[[nodiscard]] std::map<std::string, std::string> treeContents(const std::string& root);

/// A file's bytes, read through links (empty when it cannot be read).
[[nodiscard]] std::string fileBytes(const std::string& path);

} // namespace tidewell::testing
