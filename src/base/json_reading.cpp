#include "base/json_reading.hpp"

#include "base/folders.hpp"

namespace tidewell {

std::optional<nlohmann::json> parseJson(std::string_view text) {
    // The parser takes a NUL byte for the end of the input and would accept "{}\0anything"; JSON text never holds
    // a raw NUL (inside strings it must be escaped), so such a file is damaged.
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    try {
        // Without exceptions a malformed text is a discarded value. Parsing and destroying are iterative in this
        // library, so nesting depth costs heap, not stack.
        auto value = nlohmann::json::parse(text, nullptr, false);
        if (value.is_discarded()) {
            return std::nullopt;
        }
        return value;
    } catch (const std::exception&) {
        // Allocation failures are the only exceptions left; a file that exhausts memory is not readable either.
        return std::nullopt;
    }
}

std::optional<nlohmann::json> readJsonObject(const std::string& path) {
    const std::optional<std::string> contents = readWholeFile(path);
    if (!contents) {
        return std::nullopt;
    }
    std::optional<nlohmann::json> value = parseJson(*contents);
    if (!value || !value->is_object()) {
        return std::nullopt;
    }
    return value;
}

const nlohmann::json* valueAtKeyPath(const nlohmann::json& value, std::string_view keyPath) {
    const nlohmann::json* current = &value;
    if (keyPath.empty()) {
        return current;
    }
    while (true) {
        const std::size_t dot = keyPath.find('.');
        const std::string key(keyPath.substr(0, dot));
        if (!current->is_object()) {
            return nullptr;
        }
        const auto found = current->find(key);
        if (found == current->end()) {
            return nullptr;
        }
        current = &*found;
        if (dot == std::string_view::npos) {
            return current;
        }
        keyPath.remove_prefix(dot + 1);
    }
}

std::string textAtKeyPath(const nlohmann::json& value, std::string_view keyPath) {
    const nlohmann::json* found = valueAtKeyPath(value, keyPath);
    if (found == nullptr || !found->is_string()) {
        return {};
    }
    return found->get_ref<const std::string&>();
}

} // namespace tidewell
