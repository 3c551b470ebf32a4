#include "text/json.hpp"

#include <cmath>
#include <cstdio>

namespace biseam::tool {
namespace {

// Bytes beyond ASCII stay as they are: UTF-8, or what the file system holds.
std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') {
      out += '\\';
      out += letter;
    } else if (static_cast<unsigned char>(letter) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", unsigned(letter));
      out += code;
    } else {
      out += letter;
    }
  }
  return out + '"';
}

}  // namespace

void JsonObject::add(const std::string& name, const std::string& text) { add_raw(name, quoted(text)); }
void JsonObject::add(const std::string& name, std::int64_t number) { add_raw(name, std::to_string(number)); }
void JsonObject::add(const std::string& name, bool value) { add_raw(name, value ? "true" : "false"); }
void JsonObject::add(const std::string& name, const JsonObject& object) { add_raw(name, object.text()); }

void JsonObject::add(const std::string& name, double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", number);
  add_raw(name, std::isfinite(number) ? text : "null");
}

void JsonObject::add_raw(const std::string& name, const std::string& value) {
  if (!members_.empty()) members_ += ", ";
  members_ += quoted(name) + ": " + value;
}

}  // namespace biseam::tool
