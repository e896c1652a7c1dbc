// A word list as a person could hand it over: a property list (XML or binary) or plain lines, of any nesting
// and size. An input that starts with 0x01 is a recipe for a large one: three bytes of a repeat count, then a
// prefix, a part repeated that many times and a suffix, separated by NUL bytes ("<array>" repeated 200,000
// times nests past any stack; a line repeated makes a list past its size or word limits).
#include "cleaning/adult_words.hpp"
#include "fuzz/fuzz_support.hpp"

namespace {

std::string expanded(std::string_view recipe) {
    if (recipe.size() < 4) {
        return std::string(recipe);
    }
    const auto byte = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<std::uint8_t>(recipe[i])); };
    const std::size_t count = (byte(1) << 16U) | (byte(2) << 8U) | byte(3);
    const std::vector<std::string_view> parts = tidewell::fuzz::partsOf(recipe.substr(4));
    const std::string_view prefix = parts[0];
    const std::string_view middle = parts.size() > 1 ? parts[1] : std::string_view();
    const std::string_view suffix = parts.size() > 2 ? parts[2] : std::string_view();
    std::string text(prefix);
    // Just past the size limit at most: further is the same refusal, only slower.
    for (std::size_t i = 0; i < count && text.size() <= tidewell::kMaxWordListBytes + 16; ++i) {
        text += middle;
    }
    return text + std::string(suffix);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    std::string_view input = fuzz::asText(data, size);
    const std::string large = input.starts_with('\x01') ? expanded(input) : std::string();
    if (!large.empty()) {
        input = large;
    }
    static_cast<void>(readWordListPlist(input));
    const std::optional<std::vector<std::string>> words = readWordsText(input);
    if (!words) {
        fuzz::require(!whyWordsRefused(input).empty(), "a refusal gives its reason");
        return 0;
    }
    fuzz::require(input.size() <= kMaxWordListBytes && words->size() <= kMaxWords, "a list past its limits is refused");
    if (!input.starts_with("bplist") && input.find('<') == std::string_view::npos) {
        // Read as lines, no word is empty (it would match every visit) and none spans a line end.
        for (const std::string& word : *words) {
            fuzz::require(!word.empty() && word.find('\n') == std::string::npos, "a word is one non-empty line");
        }
    }
    if (words->size() <= 64) {
        // Each word is found as literal text wherever it stands in an address.
        const AdultWordList list(*words);
        for (const std::string& word : *words) {
            fuzz::require(word.empty() || list.matcher().matchesAny("https://" + word + "/x"),
                          "a word matches an address that holds it");
        }
    }
    return 0;
}
