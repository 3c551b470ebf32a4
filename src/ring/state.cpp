#include "ring/state.hpp"

#include <cstdint>
#include <cstring>

namespace biseam::ring {

namespace {

// What a state has to agree in with the engine that loads it.
struct StateHead {
  static constexpr uint32_t kVersion = 2;
  uint32_t size, version;
  StripShape strip;
  int32_t light_span, near_span, has_seams;
};

StateHead head_of(const StateParts& parts) noexcept {
  return {static_cast<uint32_t>(state_bytes(parts)),
          StateHead::kVersion,
          parts.strip,
          parts.light != nullptr ? parts.light->span : 0,
          parts.near != nullptr ? parts.near->span : 0,
          parts.seams != nullptr ? 1 : 0};
}

template <class Part>
size_t bytes_of(const Part* part) noexcept {
  return part != nullptr ? sizeof *part : 0;
}

template <class Part>
void put(char*& to, const Part* part) noexcept {
  if (part == nullptr) return;
  std::memcpy(to, part, sizeof *part);
  to += sizeof *part;
}

template <class Part>
void take(const char*& from, Part* part) noexcept {
  if (part == nullptr) return;
  std::memcpy(part, from, sizeof *part);
  from += sizeof *part;
}

template <class Part, class... Rules>
bool is_valid_part(const char*& from, const Part* part, Rules... rules) noexcept {
  if (part == nullptr) return true;
  Part read;
  take(from, &read);
  return is_valid(read, rules...);
}

bool is_valid_state(const StateParts& parts, const char* from) noexcept {
  const StateHead wanted = head_of(parts);
  if (std::memcmp(from, &wanted, sizeof wanted) != 0) return false;
  from += sizeof wanted;
  return is_valid_part(from, parts.scene) && is_valid_part(from, parts.light, wanted.light_span) &&
         is_valid_part(from, parts.near, near_shape(parts.strip), wanted.near_span) &&
         (parts.seams == nullptr || are_valid_seams(*parts.seams, parts.seam_margin, from));
}

}  // namespace

int history(const StateParts& parts) noexcept {
  const int light = parts.light != nullptr ? parts.light->span : 0, near = parts.near != nullptr ? parts.near->span : 0;
  const int seams = parts.seams != nullptr ? SeamMemory::kHistory : 0;
  return (light > near ? light : near) + seams;  // seams were searched in matched light, with near things together
}

void forget(const StateParts& parts) noexcept {
  if (parts.scene != nullptr) forget(*parts.scene);
  if (parts.light != nullptr) forget(*parts.light);
  if (parts.near != nullptr) forget(*parts.near);
  if (parts.seams != nullptr) forget(*parts.seams);
}

size_t state_bytes(const StateParts& parts) noexcept {
  return sizeof(StateHead) + bytes_of(parts.scene) + bytes_of(parts.light) + bytes_of(parts.near) +
         (parts.seams != nullptr ? parts.seams->kept_bytes() : 0);
}

void save_state(const StateParts& parts, void* state) noexcept {
  char* to = static_cast<char*>(state);
  const StateHead head = head_of(parts);
  put(to, &head);
  put(to, parts.scene);
  put(to, parts.light);
  put(to, parts.near);
  if (parts.seams != nullptr) std::memcpy(to, parts.seams->count, parts.seams->kept_bytes());
}

bool load_state(const StateParts& parts, const void* state) noexcept {
  const char* from = static_cast<const char*>(state);
  if (!is_valid_state(parts, from)) return false;
  from += sizeof(StateHead);
  take(from, parts.scene);
  take(from, parts.light);
  take(from, parts.near);
  if (parts.seams != nullptr) go_on(*parts.seams, from);
  return true;
}

}  // namespace biseam::ring
