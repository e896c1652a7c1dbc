#include "support/disk_builder.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

extern char** environ;

namespace tidewell::testing {

namespace {

void runQuietly(std::vector<std::string> argv) {
    std::vector<char*> args;
    for (std::string& arg : argv) {
        args.push_back(arg.data());
    }
    args.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    if (posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ) == 0) {
        int status = 0;
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

void writeAll(const std::string& path, std::string_view contents) {
    makeParents(path);
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (fd < 0) {
        throw std::runtime_error("cannot write " + path);
    }
    std::size_t done = 0;
    while (done < contents.size()) {
        const ssize_t n = ::write(fd, contents.data() + done, contents.size() - done);
        if (n <= 0) {
            ::close(fd);
            throw std::runtime_error("cannot write " + path);
        }
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
}

} // namespace

TempFolder::TempFolder()
    : TempFolder([] {
          const char* base = std::getenv("TMPDIR");
          return std::string(base != nullptr && *base != '\0' ? base : "/tmp");
      }()) {}

TempFolder::TempFolder(const std::string& base) {
    std::string pattern = base + "/tidewell-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder");
    }
    m_path = pattern;
}

TempFolder::~TempFolder() {
    removeTree(m_path);
}

void removeTree(const std::string& path) {
    // Tests make unreadable folders and trees deeper than any path limit; the system tools cope with both.
    runQuietly({"chmod", "-R", "u+rwX", "--", path});
    runQuietly({"rm", "-rf", "--", path});
}

void makeParents(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
}

DiskBuilder::DiskBuilder(std::string root, std::string login, const DiskLayout& layout)
    : m_root(std::move(root)), m_login(std::move(login)), m_layout(&layout) {
    std::filesystem::create_directories(home());
}

std::string DiskBuilder::at(std::string_view path) const {
    if (!path.empty() && path.front() == '/') {
        return m_root + std::string(path);
    }
    return home() + "/" + std::string(path);
}

DiskRoot DiskBuilder::disk() const {
    auto disk = DiskRoot::make(m_root, m_login, *m_layout);
    if (!disk) {
        throw std::runtime_error(disk.error());
    }
    return *disk;
}

DiskBuilder& DiskBuilder::folder(std::string_view path) {
    std::filesystem::create_directories(at(path));
    return *this;
}

DiskBuilder& DiskBuilder::file(std::string_view path, std::size_t bytes, char fill) {
    writeAll(at(path), std::string(bytes, fill));
    return *this;
}

DiskBuilder& DiskBuilder::text(std::string_view path, std::string_view contents) {
    writeAll(at(path), contents);
    return *this;
}

DiskBuilder& DiskBuilder::link(std::string_view path, std::string_view target) {
    const std::string where = at(path);
    makeParents(where);
    if (::symlink(std::string(target).c_str(), where.c_str()) != 0) {
        throw std::runtime_error("cannot link " + where);
    }
    return *this;
}

DiskBuilder& DiskBuilder::app(std::string_view absolutePath) {
    return text(std::string(absolutePath) + "/Contents/Info.plist",
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict/></plist>\n");
}

DiskBuilder& DiskBuilder::chromeLocalState(const std::vector<std::pair<std::string, std::string>>& profiles,
                                          std::string_view dataFolder) {
    nlohmann::ordered_json infoCache = nlohmann::ordered_json::object();
    for (const auto& [folder, name] : profiles) {
        infoCache[folder] = {{"name", name}, {"is_using_default_name", false}};
    }
    const nlohmann::ordered_json localState = {{"browser", {{"last_redirect_origin", ""}}},
                                               {"profile", {{"info_cache", infoCache}, {"last_used", "Default"}}}};
    return text(std::string(dataFolder) + "/Local State", localState.dump(3));
}

DiskBuilder& DiskBuilder::allApps() {
    return app("/Applications/Safari.app")
        .app("/Applications/Google Chrome.app")
        .app("/Applications/Firefox.app")
        .app("/Applications/Mail.app")
        .app("/Applications/Utilities/Adobe Flash Player Install Manager.app")
        .app("/System/Library/CoreServices/Finder.app");
}

int makeFolderChain(const std::string& folder, int levels) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels && fd >= 0; ++level) {
        ::mkdirat(fd, "d", 0755);
        ::close(::openat(fd, "f", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        const int next = ::openat(fd, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(fd);
        fd = next;
    }
    return fd;
}

} // namespace tidewell::testing
