#include "view/page.hpp"

#include <filesystem>
#include <vector>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "text/base64.hpp"
#include "text/html.hpp"

namespace biseam::tool {
namespace {

constexpr std::size_t kPieceBytes = std::size_t(3) << 20;  // a multiple of 3, so that every piece is base64 of its own

// A JSON string that may stand in a script element.
std::string quote_json(std::string_view text) {
  constexpr char kHex[] = "0123456789abcdef";
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || c == '"' || c == '\\' || c == '<') {
      out += std::string("\\u00") + kHex[byte >> 4] + kHex[byte & 15];
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string title_of(const PageFiles& files) { return std::filesystem::path(files.panorama.path).filename().string(); }

std::string describe(std::string_view role, const PanoramaFile& file, bool served) {
  std::string out = quote_json(role) + ":{\"type\":" + quote_json(mime_type(file.media));
  if (served) out += ",\"address\":" + quote_json(served_name(role, file));
  return out + "}";
}

std::string settings(const PageFiles& files, bool served) {
  std::string out = "<script type=\"application/json\" id=\"settings\">{\"title\":" + quote_json(title_of(files)) + ",";
  out += describe("panorama", files.panorama, served);
  if (files.seams) out.append(",").append(describe("seams", *files.seams, served));
  return out + "}</script>\n";
}

// Calls value(name) for every @@NAME@@ and text(piece) for what is between.
template <class Text, class Value>
void fill(std::string_view page, Text text, Value value) {
  constexpr std::string_view kMark = "@@";
  for (;;) {
    const std::size_t begin = page.find(kMark);
    text(page.substr(0, begin));
    if (begin == page.npos) return;
    const std::size_t name = begin + kMark.size(), end = page.find(kMark, name);
    value(page.substr(name, end - name));
    page.remove_prefix(end + kMark.size());
  }
}

void write_text(const WriteBytes& write, std::string_view text) {
  write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void write_file(std::string_view role, const PanoramaFile& file, const WriteBytes& write) {
  ByteSource source(file.path);
  std::uint64_t written = 0;
  for (;;) {
    const std::vector<std::uint8_t> bytes = source.read_all(kPieceBytes);
    if (bytes.empty()) break;
    written += bytes.size();
    write_text(write, "<script type=\"text/plain\" data-of=\"" + std::string(role) + "\">" + base64(bytes) + "</script>\n");
  }
  if (written != file.bytes) throw Failure(ExitCode::input, file.path + ": changed while it was read");
}

}  // namespace

void write_page(std::string_view page, const PageFiles& files, const WriteBytes& write) {
  const auto value = [&](std::string_view name) {
    if (name == "TITLE") return write_text(write, escape_html(title_of(files)));
    if (name == "SOURCE") return write_text(write, "blob:");
    write_text(write, settings(files, false));
    write_file("panorama", files.panorama, write);
    if (files.seams) write_file("seams", *files.seams, write);
  };
  fill(
      page, [&](std::string_view text) { write_text(write, text); }, value);
}

std::string serving_page(std::string_view page, const PageFiles& files) {
  std::string out;
  const auto value = [&](std::string_view name) {
    if (name == "TITLE")
      out += escape_html(title_of(files));
    else if (name == "SOURCE")
      out += "'self'";
    else
      out += settings(files, true);
  };
  fill(
      page, [&](std::string_view text) { out += text; }, value);
  return out;
}

std::string served_name(std::string_view role, const PanoramaFile& file) { return std::string(role) + extension(file.media); }

}  // namespace biseam::tool
