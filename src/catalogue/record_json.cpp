#include "catalogue/record_json.hpp"

namespace tidewell {

namespace {

struct ValueToJson {
    nlohmann::ordered_json operator()(bool value) const { return value; }
    nlohmann::ordered_json operator()(std::int64_t value) const { return value; }
    nlohmann::ordered_json operator()(const std::string& value) const { return value; }
    nlohmann::ordered_json operator()(const FileUrl& value) const { return value.text(); }
    nlohmann::ordered_json operator()(const UrlList& value) const { return toJson(value); }
    nlohmann::ordered_json operator()(const RecordList& value) const { return toJson(value); }
};

} // namespace

nlohmann::ordered_json toJson(const Record& record) {
    auto object = nlohmann::ordered_json::object();
    for (const auto& [key, value] : record.entries()) {
        object[key] = std::visit(ValueToJson{}, value);
    }
    return object;
}

nlohmann::ordered_json toJson(const UrlList& urls) {
    auto array = nlohmann::ordered_json::array();
    for (const FileUrl& url : urls) {
        array.push_back(url.text());
    }
    return array;
}

std::string jsonText(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

nlohmann::ordered_json toJson(const RecordList& records) {
    auto array = nlohmann::ordered_json::array();
    for (const RecordPtr& record : records) {
        array.push_back(toJson(*record));
    }
    return array;
}

} // namespace tidewell
