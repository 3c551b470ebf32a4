#include "base/printable.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(Printable, PlainTextOfAnyLanguageStays) {
  for (const char* text : {"", "a b/c.png", "~\"'\\", "Müller", "写真.jpg", "фото", "صورة", "\U0001f469\u200d\U0001f52c",
                           "\u00a0", "\U0010fffd"}) {
    EXPECT_EQ(printable(text), text);
  }
}

TEST(Printable, ControlCharactersAreEscaped) {
  EXPECT_EQ(printable("a\x1b[31mb"), "a\\x1b[31mb");
  EXPECT_EQ(printable("a\nbiseam: b\r\t"), "a\\nbiseam: b\\r\\t");
  EXPECT_EQ(printable(std::string_view("\0\x7f\b", 3)), "\\x00\\x7f\\x08");
  EXPECT_EQ(printable("\u0080\u009b31m\u009f"), "\\u{80}\\u{9b}31m\\u{9f}");
}

TEST(Printable, WhatTurnsOrHidesTextIsEscaped) {
  EXPECT_EQ(printable("a\u202egnp.exe"), "a\\u{202e}gnp.exe");
  EXPECT_EQ(printable("\u200e\u200f\u061c\u2066\u2069"), "\\u{200e}\\u{200f}\\u{61c}\\u{2066}\\u{2069}");
  EXPECT_EQ(printable("\u2028\u2029\u200b\ufeff\U000e0041"), "\\u{2028}\\u{2029}\\u{200b}\\u{feff}\\u{e0041}");
}

TEST(Printable, BytesThatAreNoUtf8AreEscaped) {
  EXPECT_EQ(printable("a\xff\xfe"), "a\\xff\\xfe");
  EXPECT_EQ(printable("\x80\x9b"), "\\x80\\x9b");                    // without a first byte
  EXPECT_EQ(printable("\xc3"), "\\xc3");                             // cut short
  EXPECT_EQ(printable("\xe5\x86z"), "\\xe5\\x86z");                  // cut short, then a letter
  EXPECT_EQ(printable("\xc0\xaf\xc1\x81"), "\\xc0\\xaf\\xc1\\x81");  // overlong
  EXPECT_EQ(printable("\xe0\x80\x9b"), "\\xe0\\x80\\x9b");           // overlong
  EXPECT_EQ(printable("\xf0\x80\x80\x9b"), "\\xf0\\x80\\x80\\x9b");  // overlong
  EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // half a surrogate pair
  EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // beyond Unicode
  EXPECT_EQ(printable("\xf8\x88\x80\x80\x80"), "\\xf8\\x88\\x80\\x80\\x80");
}

}  // namespace
}  // namespace biseam::tool
