#include "view/site.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/view/ask.hpp"

namespace biseam::tool {
namespace {

using namespace test;

PanoramaFile make_file(const std::string& path, const std::string& bytes, Media media) {
  write_bytes(path, bytes);
  PanoramaFile file;
  file.path = path;
  file.media = media;
  file.bytes = bytes.size();
  return file;
}

TEST(OpenFile, KnowsItsTypeItsLengthAndWhenItChanged) {
  const ScratchFolder folder;
  const PanoramaFile file = make_file(folder / "a.webm", "twelve bytes", Media::webm);
  const OpenFile open(file), again(file);
  EXPECT_EQ(open.type(), "video/webm");
  EXPECT_EQ(open.bytes(), 12u);
  EXPECT_TRUE(open.tag().starts_with('"') && open.tag().ends_with('"') && open.tag().size() > 2) << open.tag();
  EXPECT_EQ(open.tag(), again.tag());
  write_bytes(file.path, "other bytes!");
  std::filesystem::last_write_time(file.path, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_NE(OpenFile(file).tag(), open.tag());
}

TEST(OpenFile, StaysOpenInTheOneItMovesTo) {
  const ScratchFolder folder;
  OpenFile from(make_file(folder / "a.png", "bytes", Media::png));
  const int descriptor = from.descriptor();
  {
    const OpenFile to(std::move(from));
    EXPECT_EQ(to.descriptor(), descriptor);
    char first = 0;
    EXPECT_EQ(::pread(to.descriptor(), &first, 1, 0), 1);
    EXPECT_EQ(first, 'b');
  }
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST(OpenFile, OneThatCantBeOpenedIsNamed) {
  const ScratchFolder folder;
  PanoramaFile file;
  file.path = folder / "none.png";
  const auto [code, line] = failure_of([&] { OpenFile{file}; });
  EXPECT_EQ(code, ExitCode::input);
  expect_one_line_naming(line, file.path + ": can't be opened");
}

// Served by a thread of its own, on any free port.
class SiteTest : public testing::Test {
 protected:
  SiteTest() : seams_(make_file(folder_ / "s.png", "the seams", Media::png)) {
    daemon_ =
        MHD_start_daemon(MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD, 0, nullptr, nullptr, answer, this, MHD_OPTION_END);
    port_ = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT)->port;
    const PageFiles files{make_file(folder_ / "p.jpg", "0123456789", Media::jpeg), &seams_};
    site_.emplace("<page>", files, port_);
  }
  ~SiteTest() override { MHD_stop_daemon(daemon_); }

  Answer get(const std::string& address, const std::string& fields = "") { return ask(port_, "GET " + address, fields); }

  static MHD_Result answer(void* to, MHD_Connection* connection, const char* address, const char* method, const char*,
                           const char*, std::size_t*, void**) {
    return static_cast<SiteTest*>(to)->site_->answer(connection, address, method);
  }

  ScratchFolder folder_;
  PanoramaFile seams_;
  MHD_Daemon* daemon_;
  int port_;
  std::optional<Site> site_;
};

TEST_F(SiteTest, HasThePageAndItsFilesAndNothingElse) {
  const Answer page = get("/"), panorama = get("/panorama.jpg"), seams = get("/seams.png");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.body, "<page>");
  EXPECT_TRUE(page.says("Content-Type: text/html; charset=utf-8")) << page.head;
  EXPECT_EQ(panorama.body, "0123456789");
  EXPECT_TRUE(panorama.says("Content-Type: image/jpeg")) << panorama.head;
  EXPECT_TRUE(panorama.says("Accept-Ranges: bytes")) << panorama.head;
  EXPECT_EQ(seams.body, "the seams");
  for (const Answer& answer : {page, panorama, seams}) {
    EXPECT_TRUE(answer.says("X-Content-Type-Options: nosniff"));
    EXPECT_TRUE(answer.says("Cross-Origin-Resource-Policy: same-origin"));
    EXPECT_TRUE(answer.says("Cache-Control: no-cache"));
  }
  for (const std::string address : {"/p.jpg", "/panorama.png", "/s.png", "//panorama.jpg", "/panorama.jpg/"}) {
    EXPECT_EQ(get(address).status, 404) << address;
  }
  EXPECT_EQ(get((folder_ / "p.jpg")).status, 404);
}

TEST_F(SiteTest, GivesTheRangesOfAFileThatAreWanted) {
  const Answer part = get("/panorama.jpg", "Range: bytes=2-4\r\n"), none = get("/panorama.jpg", "Range: bytes=10-\r\n");
  EXPECT_EQ(part.status, 206);
  EXPECT_EQ(part.body, "234");
  EXPECT_TRUE(part.says("Content-Range: bytes 2-4/10")) << part.head;
  EXPECT_EQ(none.status, 416);
  EXPECT_EQ(none.body, "");
  EXPECT_TRUE(none.says("Content-Range: bytes */10")) << none.head;
}

// The rest of a file that has changed is no use.
TEST_F(SiteTest, ARangeOfAnotherFileIsTheWhole) {
  const std::string tag = OpenFile(make_file(folder_ / "other.jpg", "0123456789", Media::jpeg)).tag();
  const Answer other = get("/panorama.jpg", "Range: bytes=2-4\r\nIf-Range: " + tag + "\r\n");
  EXPECT_EQ(other.status, 200);
  EXPECT_EQ(other.body, "0123456789");
  const std::size_t at = other.head.find("ETag: ") + 6;
  const std::string own = other.head.substr(at, other.head.find("\r\n", at) - at);
  EXPECT_EQ(get("/panorama.jpg", "Range: bytes=2-4\r\nIf-Range: " + own + "\r\n").body, "234");
}

TEST_F(SiteTest, IsReadOnly) {
  const Answer head = ask(port_, "HEAD /panorama.jpg", "Range: bytes=2-4\r\n");
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body, "");
  EXPECT_TRUE(head.says("Content-Length: 10")) << head.head;
  for (const std::string method : {"DELETE", "OPTIONS"}) {
    const Answer answer = ask(port_, method + " /panorama.jpg");
    EXPECT_EQ(answer.status, 405) << method;
    EXPECT_TRUE(answer.says("Allow: GET, HEAD")) << answer.head;
  }
}

TEST_F(SiteTest, AnswersUnderItsOwnNamesOnly) {
  for (const std::string host : {"elsewhere.example", "localhost:1"}) {
    const Answer answer = get("/panorama.jpg", "Host: " + host + "\r\n");
    EXPECT_EQ(answer.status, 421) << host;
    EXPECT_EQ(answer.body, "This is no address of the server.\n");
  }
}

}  // namespace
}  // namespace biseam::tool
