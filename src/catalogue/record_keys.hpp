#pragma once

#include <string_view>

// Every key of Tidewell's records. These texts are what the JSON export shows and what other tools read: they
// never change, whatever they seem to say ("isHeader" is false on a caption; "isFromThornsweep" marks a grouped
// section).
namespace tidewell::keys {

// A section of the catalogue.
inline constexpr std::string_view kName = "Name";
inline constexpr std::string_view kItems = "List";
inline constexpr std::string_view kSize = "Size";
/// The source's application path, or the name of the section's image.
inline constexpr std::string_view kImage = "Img";
/// Whether the details panel groups the section's rows under captions.
inline constexpr std::string_view kGrouped = "isFromThornsweep";
/// The promotion row's only key, whose value is kPromotionType.
inline constexpr std::string_view kType = "Type";
inline constexpr std::string_view kPromotionType = "Scan";

// A section or an item.
/// The tick: true, false, or a number (1, 0, -1 for mixed).
inline constexpr std::string_view kTick = "isChecked";
inline constexpr std::string_view kEnabled = "isEnabled";

// An item of a section.
inline constexpr std::string_view kItemName = "NameText";
/// The locations a clean removes.
inline constexpr std::string_view kLocations = "AllList";
inline constexpr std::string_view kSizeText = "sizeText";
/// An item of the Browser Extensions section.
inline constexpr std::string_view kExtensionRow = "isExt";
/// False on a caption of a grouped section; true on an item that has locations.
inline constexpr std::string_view kNotCaption = "isHeader";
/// An Adult History item's history database.
inline constexpr std::string_view kHistoryDatabase = "Path";
/// Every history database an Adult History item purges, one per profile, in profile order ("Path" among them).
inline constexpr std::string_view kAllHistoryDatabases = "AllPaths";

// An installed extension, as the inventories list it.
inline constexpr std::string_view kExtensionLocation = "urlExt";
inline constexpr std::string_view kExtensionVersion = "verExt";
inline constexpr std::string_view kExtensionName = "nameExt";
inline constexpr std::string_view kExtensionSize = "sizeExt";
inline constexpr std::string_view kExtensionProfile = "PersonExt";

// A running browser, as the browser panel lists it.
inline constexpr std::string_view kBrowserName = "NameBrowser";
inline constexpr std::string_view kBrowserIcon = "iconBrowser";

} // namespace tidewell::keys
