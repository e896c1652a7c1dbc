#include "support/hostile_inputs.hpp"

#include <fmt/format.h>

#include <random>

namespace tidewell::testing {

namespace {

void bigEndian(std::string& out, std::uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFFU));
    }
}

// A marker with its count: in the marker's low four bits, or after it as an integer object.
void markerWithCount(std::string& out, std::uint8_t kind, std::size_t count) {
    if (count < 15) {
        out.push_back(static_cast<char>(kind | count));
        return;
    }
    out.push_back(static_cast<char>(kind | 0xF));
    out.push_back(static_cast<char>(0x12)); // a 4-byte integer follows
    bigEndian(out, count, 4);
}

} // namespace

std::string nestedXmlPlist(std::size_t levels) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
    for (std::size_t i = 0; i < levels; ++i) {
        text += "<array>";
    }
    text += "<string>porn</string>";
    for (std::size_t i = 0; i < levels; ++i) {
        text += "</array>";
    }
    return text + "</plist>\n";
}

std::string binaryPlist(const std::vector<BinaryObject>& objects, std::uint32_t top) {
    std::string out = "bplist00";
    std::vector<std::uint64_t> offsets;
    for (const BinaryObject& object : objects) {
        offsets.push_back(out.size());
        if (object.isArray) {
            markerWithCount(out, 0xA0, object.references.size());
            for (const std::uint32_t reference : object.references) {
                bigEndian(out, reference, 4);
            }
        } else {
            markerWithCount(out, 0x50, object.text.size());
            out += object.text;
        }
    }
    const std::uint64_t table = out.size();
    for (const std::uint64_t offset : offsets) {
        bigEndian(out, offset, 4);
    }
    out.append(6, '\0');
    out.push_back(4); // offset size
    out.push_back(4); // reference size
    bigEndian(out, objects.size(), 8);
    bigEndian(out, top, 8);
    bigEndian(out, table, 8);
    return out;
}

std::string cyclicBinaryPlist() {
    return binaryPlist({BinaryObject{{}, {1, 0}, true}, BinaryObject{"porn", {}, false}});
}

std::string deepBinaryPlist(std::size_t levels) {
    std::vector<BinaryObject> objects;
    for (std::size_t i = 0; i < levels; ++i) {
        objects.push_back({{}, {static_cast<std::uint32_t>(i + 1)}, true});
    }
    objects.push_back({"porn", {}, false});
    return binaryPlist(objects);
}

std::string doublingBinaryPlist(std::size_t levels) {
    std::vector<BinaryObject> objects;
    for (std::size_t i = 0; i < levels; ++i) {
        const auto next = static_cast<std::uint32_t>(i + 1);
        objects.push_back({{}, {next, next}, true});
    }
    objects.push_back({"porn", {}, false});
    return binaryPlist(objects);
}

std::string randomWordLines(std::size_t bytes, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::string text;
    text.reserve(bytes + 64);
    while (text.size() < bytes) {
        for (std::size_t i = 0, n = 8 + random() % 33; i < n; ++i) {
            text.push_back(static_cast<char>('a' + random() % 26));
        }
        text.push_back('\n');
    }
    text.resize(bytes);
    return text;
}

std::string hostileLocalState(std::size_t hostile, std::size_t climbs, std::string_view target) {
    std::string climb;
    for (std::size_t i = 0; i < climbs; ++i) {
        climb += "..\\u0000/";
    }
    std::string text = R"({"profile":{"info_cache":{"Default":{"name":"Person 1"})";
    for (std::size_t i = 0; i < hostile; ++i) {
        std::string key;
        switch (i % 6) {
        case 0:
            key = climb + std::string(target);
            break;
        case 1:
            key = fmt::format("../../../../../../{}{}", target, i);
            break;
        case 2:
            key = "..";
            break;
        case 3:
            key = fmt::format("Profile {}/..", i);
            break;
        case 4:
            key = fmt::format("..\\u0000{}", i);
            break;
        default:
            key = fmt::format("/{}/{}", target, i);
        }
        text += fmt::format(R"(,"{}":{{"name":"Evil"}})", key);
    }
    return text + R"(,"":{"name":"Empty"}},"last_used":"Default"}})";
}

} // namespace tidewell::testing
