#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell::fuzz {

/// Ends the run with a message when an invariant does not hold; libFuzzer keeps the input that did it.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

/// The input as text.
inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// The input cut at NUL bytes into its parts (a NUL never appears in the JSON texts the parts stand for).
inline std::vector<std::string_view> partsOf(std::string_view input) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t nul = input.find('\0');
        parts.push_back(input.substr(0, nul));
        if (nul == std::string_view::npos) {
            return parts;
        }
        input.remove_prefix(nul + 1);
    }
}

/// A folder of this fuzzing process for the disk an input builds, in memory where there is such a place; emptied
/// for every input and removed when the process ends.
class ScratchFolder {
public:
    ScratchFolder() {
        struct stat st {};
        const char* tmp = std::getenv("TMPDIR");
        std::string base = ::stat("/dev/shm", &st) == 0 && ::access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                           : tmp != nullptr && *tmp != '\0'                                ? tmp
                                                                                           : "/tmp";
        std::string pattern = base + "/tidewell-fuzz-XXXXXX";
        require(::mkdtemp(pattern.data()) != nullptr, "a scratch folder can be made");
        m_path = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

    /// Removes what an input left below `relative` (links removed as links, never followed).
    void clear(const std::string& relative) const {
        std::error_code ignored;
        std::filesystem::remove_all(m_path + "/" + relative, ignored);
    }

private:
    std::string m_path;
};

/// Writes a whole file, making nothing else.
inline bool writeFile(const std::string& path, std::string_view contents) {
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(contents.data(), 1, contents.size(), file) == contents.size();
    return std::fclose(file) == 0 && written;
}

} // namespace tidewell::fuzz
