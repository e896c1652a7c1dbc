#pragma once

#include <sys/resource.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "layout/disk_root.hpp"

namespace tidewell::testing {

/// A fresh folder under the system's temporary folder, removed with all it holds (deep trees and unreadable
/// folders included) when it goes.
class TempFolder {
public:
    TempFolder();
    /// A fresh folder under base instead (a memory-backed folder for tests that write many small databases).
    explicit TempFolder(const std::string& base);
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// Removes a tree whatever it holds, links not followed.
void removeTree(const std::string& path);

/// Builds a disk in a layout (a macOS disk by default). A path that begins with "/" is under the disk root; any
/// other path is relative to the home folder <root><the layout's homes>/<login>. Parents are made as needed.
class DiskBuilder {
public:
    explicit DiskBuilder(std::string root, std::string login = "ann", const DiskLayout& layout = macosLayout());

    [[nodiscard]] const std::string& root() const { return m_root; }
    [[nodiscard]] const std::string& login() const { return m_login; }
    [[nodiscard]] std::string home() const { return m_root + std::string(m_layout->homes) + "/" + m_login; }
    /// The absolute path of a builder path.
    [[nodiscard]] std::string at(std::string_view path) const;
    /// The disk as the catalogue sees it.
    [[nodiscard]] DiskRoot disk() const;

    DiskBuilder& folder(std::string_view path);
    /// A file of `bytes` bytes (each a copy of `fill`).
    DiskBuilder& file(std::string_view path, std::size_t bytes = 1, char fill = 'x');
    DiskBuilder& text(std::string_view path, std::string_view contents);
    /// A symbolic link at `path` whose target is the text `target`, as given.
    DiskBuilder& link(std::string_view path, std::string_view target);
    /// An application bundle: a folder with Contents/Info.plist, at an absolute layout path
    /// ("/Applications/Safari.app").
    DiskBuilder& app(std::string_view absolutePath);
    /// Chrome's "Local State" with these (folder, display name) profiles, in order, in the macOS data folder or in
    /// the given one.
    DiskBuilder& chromeLocalState(const std::vector<std::pair<std::string, std::string>>& profiles,
                                  std::string_view dataFolder = "Library/Application Support/Google/Chrome");

    /// The five applications the catalogue looks for, and the Finder.
    DiskBuilder& allApps();

private:
    std::string m_root;
    std::string m_login;
    const DiskLayout* m_layout;
};

/// Makes a chain of `levels` folders named "d" in an existing folder, each but the deepest holding an empty file "f"
/// beside the next "d", and returns the deepest folder open (the caller closes it), or -1 when the chain could not
/// be made. It is made through open folders, so it may outrun any path length limit.
[[nodiscard]] int makeFolderChain(const std::string& folder, int levels);

/// Lowers the process's soft limit on open descriptors while it lives: a walk that kept one descriptor per level
/// of a deep tree fails under it.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t limit) {
        ::getrlimit(RLIMIT_NOFILE, &m_saved);
        const rlimit lowered{limit, m_saved.rlim_max};
        m_lowered = ::setrlimit(RLIMIT_NOFILE, &lowered) == 0;
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_saved); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

    /// Whether the limit was lowered.
    [[nodiscard]] bool lowered() const { return m_lowered; }

private:
    rlimit m_saved{};
    bool m_lowered = false;
};

/// Makes every parent folder of path (not path itself).
void makeParents(const std::string& path);

} // namespace tidewell::testing
