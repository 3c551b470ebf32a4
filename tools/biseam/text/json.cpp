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

std::string number_text(const char* format, double number) {
  if (!std::isfinite(number)) return "null";
  char text[400];  // of the largest one without an exponent
  std::snprintf(text, sizeof text, format, number);
  return text;
}

// text(item) of each.
template <class Item, class Text>
std::string array_of(const std::vector<Item>& items, Text text) {
  std::string all;
  for (const Item& item : items) all += (all.empty() ? "" : ", ") + text(item);
  return "[" + all + "]";
}

}  // namespace

void JsonObject::add(const std::string& name, const std::string& text) { add_raw(name, quoted(text)); }
void JsonObject::add(const std::string& name, std::int64_t number) { add_raw(name, std::to_string(number)); }
void JsonObject::add(const std::string& name, bool value) { add_raw(name, value ? "true" : "false"); }
void JsonObject::add(const std::string& name, const JsonObject& object) { add_raw(name, object.text()); }
void JsonObject::add(const std::string& name, const std::vector<double>& numbers) {
  add_raw(name, array_of(numbers, [](double number) { return number_text("%.6g", number); }));
}
void JsonObject::add(const std::string& name, const std::vector<JsonObject>& objects) {
  add_raw(name, array_of(objects, [](const JsonObject& object) { return object.text(); }));
}

void JsonObject::add(const std::string& name, double number) { add_raw(name, number_text("%.6g", number)); }
void JsonObject::add_fixed(const std::string& name, double number) { add_raw(name, number_text("%.6f", number)); }

void JsonObject::add_raw(const std::string& name, const std::string& value) {
  if (!members_.empty()) members_ += ", ";
  members_ += quoted(name) + ": " + value;
}

}  // namespace biseam::tool
