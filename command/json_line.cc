#include "json_line.h"

#include <nlohmann/json.hpp>

#include "utf8_text.h"

struct JsonLine::Members {
  nlohmann::ordered_json object;
};

JsonLine::JsonLine(const char* event) : members_(std::make_unique<Members>()) {
  members_->object["event"] = event;
}

JsonLine::~JsonLine() = default;

JsonLine& JsonLine::Text(const char* name, const wchar_t* value) { return Utf8(name, ToUtf8Text(value)); }

JsonLine& JsonLine::Utf8(const char* name, const std::string& value) {
  members_->object[name] = value;
  return *this;
}

JsonLine& JsonLine::Number(const char* name, int64_t value) {
  members_->object[name] = value;
  return *this;
}

JsonLine& JsonLine::Flag(const char* name, bool value) {
  members_->object[name] = value;
  return *this;
}

JsonLine& JsonLine::List(const char* name, const std::vector<std::string>& values) {
  members_->object[name] = values;
  return *this;
}

std::string JsonLine::Build() const {
  // The library escapes what JSON wants escaped, which is less than what a terminal acts on.
  return EscapedForJson(
      members_->object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}
