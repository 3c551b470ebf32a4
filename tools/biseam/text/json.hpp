#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace biseam::tool {

// Builds one JSON object, members in the order they are added.
class JsonObject {
 public:
  void add(const std::string& name, const std::string& text);
  void add(const std::string& name, const char* text) { add(name, std::string(text)); }
  void add(const std::string& name, std::int64_t number);
  void add(const std::string& name, int number) { add(name, std::int64_t(number)); }
  void add(const std::string& name, double number);        // null where it is not finite
  void add_fixed(const std::string& name, double number);  // with six decimals
  void add(const std::string& name, bool value);
  void add(const std::string& name, const JsonObject& object);
  void add(const std::string& name, const std::vector<double>& numbers);
  void add(const std::string& name, const std::vector<JsonObject>& objects);

  std::string text() const { return "{" + members_ + "}"; }

 private:
  void add_raw(const std::string& name, const std::string& value);

  std::string members_;
};

}  // namespace biseam::tool
