#include "view/page.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::ScratchFolder;
using test::write_bytes;

constexpr const char* kTemplate = "<title>@@TITLE@@</title>@@SOURCE@@|@@CONTENT@@|@@SOURCE@@";

PanoramaFile make_file(const std::string& path, const std::string& bytes, Media media = Media::png) {
  write_bytes(path, bytes);
  PanoramaFile file;
  file.path = path;
  file.media = media;
  file.bytes = bytes.size();
  return file;
}

std::string written(const PageFiles& files) {
  std::string out;
  write_page(kTemplate, files, [&](std::span<const std::uint8_t> bytes) { out.append(bytes.begin(), bytes.end()); });
  return out;
}

TEST(Page, HoldsTheFilesAsBase64) {
  const ScratchFolder folder;
  const PanoramaFile seams = make_file(folder / "s.png", "fo");
  const PageFiles files{make_file(folder / "a.jpg", "foo", Media::jpeg), &seams};
  EXPECT_EQ(written(files),
            "<title>a.jpg</title>blob:|<script type=\"application/json\" id=\"settings\">{\"title\":\"a.jpg\","
            "\"panorama\":{\"type\":\"image/jpeg\"},\"seams\":{\"type\":\"image/png\"}}</script>\n"
            "<script type=\"text/plain\" data-of=\"panorama\">Zm9v</script>\n"
            "<script type=\"text/plain\" data-of=\"seams\">Zm8=</script>\n|blob:");
}

TEST(Page, AServedOneNamesAddresses) {
  const ScratchFolder folder;
  const PageFiles files{make_file(folder / "a.webm", "foo", Media::webm), nullptr};
  EXPECT_EQ(serving_page(kTemplate, files),
            "<title>a.webm</title>'self'|<script type=\"application/json\" id=\"settings\">{\"title\":\"a.webm\","
            "\"panorama\":{\"type\":\"video/webm\",\"address\":\"panorama.webm\"}}</script>\n|'self'");
}

TEST(Page, ALargeFileComesInPiecesOfWholeBytes) {
  const ScratchFolder folder;
  const std::size_t piece = 3 << 20;
  const PageFiles files{make_file(folder / "a.mp4", std::string(piece + 1, 'x'), Media::mp4), nullptr};
  const std::string page = written(files), begin = "<script type=\"text/plain\" data-of=\"panorama\">", end = "</script>";
  const std::size_t first = page.find(begin) + begin.size(), first_end = page.find(end, first);
  EXPECT_EQ(first_end - first, piece / 3 * 4);
  const std::size_t second = page.find(begin, first_end) + begin.size();
  EXPECT_EQ(page.substr(second, page.find(end, second) - second), "eA==");
}

TEST(Page, NamesAreTextAndNothingElse) {
  const ScratchFolder folder;
  const PageFiles files{make_file(folder / "<\"&\\\n@@TITLE@@\x01.png", "foo"), nullptr};
  const std::string page = written(files);
  EXPECT_NE(page.find("<title>&lt;&quot;&amp;\\\n@@TITLE@@\x01.png</title>"), page.npos);
  EXPECT_NE(page.find("{\"title\":\"\\u003c\\u0022&\\u005c\\u000a@@TITLE@@\\u0001.png\""), page.npos);
}

TEST(Page, AFileThatChangedSinceItWasInspectedIsRefused) {
  const ScratchFolder folder;
  PageFiles files{make_file(folder / "a.png", "foo"), nullptr};
  write_bytes(files.panorama.path, "fo");
  const auto [code, text] = test::failure_of([&] { written(files); });
  EXPECT_EQ(code, ExitCode::input);
  test::expect_one_line_naming(text, "a.png: changed");
}

}  // namespace
}  // namespace biseam::tool
