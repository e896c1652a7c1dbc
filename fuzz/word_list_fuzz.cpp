// A word list as a person could hand it over: a property list (XML or binary) or plain lines.
#include "cleaning/adult_words.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    const std::string_view input = fuzz::asText(data, size);
    static_cast<void>(readWordListPlist(input));
    if (const std::optional<std::vector<std::string>> words = readWordsText(input);
        words && !input.starts_with("bplist") && input.find('<') == std::string_view::npos) {
        // Read as lines, no word is empty (it would match every visit) and none spans a line end.
        for (const std::string& word : *words) {
            fuzz::require(!word.empty() && word.find('\n') == std::string::npos, "a word is one non-empty line");
        }
    }
    return 0;
}
