#include "support/literal_purge.hpp"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "catalogue/file_url.hpp"

namespace tidewell::testing {

namespace {

std::vector<int> queryIds(sqlite3* db, const std::string& sql, bool firefox) {
    std::vector<int> ids;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
        int urlColumn = -1;
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            if (sqlite3_stricmp(sqlite3_column_name(statement, i), "url") == 0) {
                urlColumn = i;
            }
        }
        while (sqlite3_step(statement) == SQLITE_ROW) {
            if (firefox && urlColumn >= 0) {
                sqlite3_column_text(statement, urlColumn);
            }
            ids.push_back(sqlite3_column_int(statement, 0));
            if (firefox) {
                sqlite3_column_text(statement, 1);
            }
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
    std::vector<std::string> ids;
    for (const std::string& word : words) {
        for (const int id :
             queryIds(db, "SELECT * FROM " + table + " WHERE url LIKE '%" + word + "%'", table == "moz_places")) {
            ids.push_back(std::to_string(id));
        }
    }
    for (const std::string& id : ids) {
        const std::string sql =
            "DELETE FROM " + table + std::string(39, ' ') + "WHERE id = " + std::to_string(std::stoi(id));
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
            std::ostringstream bytes;
            bytes << std::ifstream(path, std::ios::binary).rdbuf();
            contents[relative] = "file:" + bytes.str();
        }
    }
    return contents;
}

} // namespace tidewell::testing
