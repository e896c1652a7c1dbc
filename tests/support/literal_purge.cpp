#include "support/literal_purge.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/file_url.hpp"

namespace tidewell::testing {

namespace {

std::vector<std::int64_t> queryIds(sqlite3* db, const std::string& sql) {
    std::vector<std::int64_t> ids;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            ids.push_back(sqlite3_column_int64(statement, 0));
        }
    }
    sqlite3_finalize(statement);
    return ids;
}

} // namespace

void literalPurge(const std::string& databasePath, const std::string& table, const std::vector<std::string>& words) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(FileUrl{databasePath}.text().c_str(), &db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return;
    }
    std::vector<std::int64_t> ids;
    for (const std::string& word : words) {
        for (const std::int64_t id : queryIds(db, "SELECT * FROM " + table + " WHERE url LIKE '%" + word + "%'")) {
            ids.push_back(id);
        }
    }
    for (const std::int64_t id : ids) {
        const std::string sql = "DELETE FROM " + table + " WHERE id = " + std::to_string(id);
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
    }
    sqlite3_close(db);
}

std::vector<std::string> tableDump(const std::string& databasePath, const std::string& table) {
    std::vector<std::string> rows;
    sqlite3* db = nullptr;
    sqlite3_open_v2(databasePath.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, ("SELECT rowid, * FROM " + table + " ORDER BY rowid").c_str(), -1, &statement,
                           nullptr) == SQLITE_OK) {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            std::string row;
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                row += std::to_string(sqlite3_column_type(statement, i)) + ":";
                const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, i));
                row.append(bytes != nullptr ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(statement, i)));
                row += "|";
            }
            rows.push_back(std::move(row));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return rows;
}

std::map<std::string, std::string> treeContents(const std::string& root) {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> contents;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        const fs::path& path = it->path();
        const std::string relative = fs::relative(path, root).string();
        if (it->is_symlink()) {
            contents[relative] = "link:" + fs::read_symlink(path).string();
        } else if (it->is_directory()) {
            contents[relative] = "folder";
        } else {
            contents[relative] = "file:" + fileBytes(path);
        }
    }
    return contents;
}

std::string fileBytes(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

} // namespace tidewell::testing
