#include "sources/builders.hpp"

#include "catalogue/record_keys.hpp"
#include "sources/adult_history_section.hpp"
#include "sources/extensions_section.hpp"
#include "sources/source_section.hpp"

namespace tidewell {

BuilderOutcome buildPromotionRow(ScanEnv& /*env*/) {
    return {makeRecord({{keys::kType, std::string(keys::kPromotionType)}},
                       {RecordKind::PromotionRow, nullptr, "Thornsweep", "Detects and Removes Adware"}),
            0, true};
}

std::vector<SectionBuilder> sectionBuilders(const DiskLayout& layout) {
    std::vector<SectionBuilder> builders;
    for (const SectionSlot& slot : layout.sections) {
        switch (slot.kind) {
        case SectionSlot::Kind::Source:
            builders.emplace_back([table = slot.source](ScanEnv& env) { return sourceSection(env, *table); });
            break;
        case SectionSlot::Kind::AdultHistory:
            builders.emplace_back(buildAdultHistorySection);
            break;
        case SectionSlot::Kind::BrowserExtensions:
            builders.emplace_back(buildBrowserExtensionsSection);
            break;
        case SectionSlot::Kind::Promotion:
            builders.emplace_back(buildPromotionRow);
            break;
        }
    }
    return builders;
}

} // namespace tidewell
