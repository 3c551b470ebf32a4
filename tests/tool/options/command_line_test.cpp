#include "options/command_line.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

enum class Fruit { apple, pear };

struct Basket {
  std::vector<std::string> files;
  std::string name = "mine";
  std::vector<int> corner;
  double weight = 1;
  std::uint64_t seed = 0;
  std::optional<int> count;
  std::optional<bool> ripe, washed;
  Fruit fruit = Fruit::apple;
  std::optional<Fruit> other;
  bool quick = false, marked = true;
  std::string kind;
  int even = 0;
};

// A command with an option of every sort, and one without any.
class Line {
 public:
  Line() {
    command_.option("IN", &basket_.files, "files").count(1, 2).shown_as("FILE [FILE]").required();
    command_.option("-n,--name", &basket_.name, "its name").type("NAME");
    command_.option("--corner", &basket_.corner, "a corner").separator(',').count(2, 2).one_word();
    command_.option("--weight", &basket_.weight, "its weight").number(0.5, 90).group("Numbers");
    command_.option("--seed", &basket_.seed, "a seed").whole_number(0, 4294967295).group("Numbers");
    command_.option("--count", &basket_.count, "how many").group("Numbers");
    command_.option("--ripe", &basket_.ripe, "or not");
    command_.flag("--washed", &basket_.washed, true, "is clean");
    command_.flag("--unwashed", &basket_.washed, false, "is not");
    command_.choice("--fruit", &basket_.fruit, {"apple", "pear"}, "what is in it");
    command_.choice("--other", &basket_.other, {"apple", "pear"}, "what else is");
    command_.flag("--quick", &basket_.quick, "in a hurry");
    command_.flag("!--no-mark", &basket_.marked, "unmarked");
    command_.option("--kind", &basket_.kind, "its kind").among({"wicker", "paper"});
    command_.option("--even", &basket_.even, "a number").check([](const std::string& text) {
      return text == "3" ? "must be even" : "";
    });
    command_.does([this] {
      ++runs_;
      return ExitCode::different;
    });
    line_.add("eat", "empty it").does([] { return ExitCode::done; });
  }

  ExitCode run(std::vector<std::string> words) {
    words.insert(words.begin(), "fill");
    return line_.run(words);
  }

  std::string refusal(const std::vector<std::string>& words) {
    const auto [code, line] = test::failure_of([&] { run(words); });
    EXPECT_EQ(code, ExitCode::usage);
    EXPECT_EQ(runs_, 0);
    return line;
  }

  CommandLine line_{"basket", "Fills baskets.", "basket 7", "That is all."};
  Command& command_ = line_.add("fill", "put something into it");
  Basket basket_;
  int runs_ = 0;
};

TEST(CommandLine, TheCommandThatIsChosenRunsAndSaysHowItEnded) {
  Line line;
  EXPECT_EQ(line.run({"a"}), ExitCode::different);
  EXPECT_EQ(line.runs_, 1);
  EXPECT_EQ(Line().line_.run({"eat"}), ExitCode::done);
}

TEST(CommandLine, ValuesGoWhereTheyBelong) {
  Line line;
  line.run({"a",          "--corner", "3,4",       "b",      "-n",    "yours",    "--weight", "2.5",  "--seed",
            "4294967295", "--count",  "5",         "--ripe", "off",   "--washed", "--fruit",  "pear", "--other",
            "apple",      "--quick",  "--no-mark", "--kind", "paper", "--even",   "4"});
  const Basket& basket = line.basket_;
  EXPECT_EQ(basket.files, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(basket.corner, (std::vector<int>{3, 4}));
  EXPECT_EQ(basket.name, "yours");
  EXPECT_EQ(basket.weight, 2.5);
  EXPECT_EQ(basket.seed, 4294967295u);
  EXPECT_EQ(basket.count, 5);
  EXPECT_EQ(basket.ripe, false);
  EXPECT_EQ(basket.washed, true);
  EXPECT_EQ(basket.fruit, Fruit::pear);
  EXPECT_EQ(basket.other, Fruit::apple);
  EXPECT_TRUE(basket.quick);
  EXPECT_FALSE(basket.marked);
  EXPECT_EQ(basket.kind, "paper");
  EXPECT_EQ(basket.even, 4);
}

TEST(CommandLine, WhatIsNotGivenStaysAsItIs) {
  Line line;
  line.run({"a"});
  const Basket& basket = line.basket_;
  EXPECT_EQ(basket.name, "mine");
  EXPECT_EQ(basket.weight, 1);
  EXPECT_FALSE(basket.count || basket.ripe || basket.washed || basket.other);
  EXPECT_EQ(basket.fruit, Fruit::apple);
  EXPECT_FALSE(basket.quick);
  EXPECT_TRUE(basket.marked);
  line.run({"a", "--unwashed", "--ripe", "on"});
  EXPECT_EQ(basket.washed, false);
  EXPECT_EQ(basket.ripe, true);
}

TEST(CommandLine, ValuesThatDontFitAreRefused) {
  Line line;
  EXPECT_EQ(line.refusal({}), "IN is required");
  EXPECT_EQ(line.refusal({"a", "b", "c"}), "IN: 3 are given, 2 are the most");
  EXPECT_EQ(line.refusal({"a", "--weight", "0.25"}), "--weight: '0.25' must be a number, 0.5 to 90");
  EXPECT_EQ(line.refusal({"a", "--weight", "nan"}), "--weight: 'nan' must be a number, 0.5 to 90");
  EXPECT_EQ(line.refusal({"a", "--seed", "1.5"}), "--seed: '1.5' must be a whole number, 0 to 4294967295");
  EXPECT_EQ(line.refusal({"a", "--seed", "4294967296"}), "--seed: '4294967296' must be a whole number, 0 to 4294967295");
  EXPECT_EQ(line.refusal({"a", "--count", "few"}), "--count: 'few' is not a number it can take");
  EXPECT_EQ(line.refusal({"a", "--fruit", "plum"}), "--fruit: 'plum' must be apple or pear");
  EXPECT_EQ(line.refusal({"a", "--other", ""}), "--other: '' must be apple or pear");
  EXPECT_EQ(line.refusal({"a", "--even", "3"}), "--even: '3' must be even");
  EXPECT_EQ(line.refusal({"a", "--ripe", "maybe"}), "--ripe: 'maybe' must be on or off");
  EXPECT_EQ(line.refusal({"a", "--kind", "iron"}), "--kind: 'iron' must be wicker or paper");
  EXPECT_EQ(line.refusal({"a", "--corner", "3"}), "--corner: 1 is given, 2 are wanted");
  EXPECT_EQ(line.refusal({"a", "--name"}), "--name: its value is missing");
  EXPECT_EQ(line.refusal({"a", "--nmae", "x"}), "--nmae: no such option of fill; is --name meant?");
}

TEST(CommandLine, OptionsThatAreGivenCanBeAskedFor) {
  Line line;
  Option extra = line.command_.option("--extra", &line.basket_.name, "more").count(0, 1);
  EXPECT_EQ(line.command_.given_in("Numbers"), "");
  EXPECT_FALSE(extra.is_given());
  line.run({"a", "--count", "5", "--extra"});
  EXPECT_TRUE(extra.is_given());
  EXPECT_EQ(line.command_.given_in("Numbers"), "--count");
  EXPECT_EQ(line.command_.given_in("Options"), "IN");
  EXPECT_EQ(line.command_.given_of({"--seed", "--count"}), "--count");
  EXPECT_EQ(line.command_.given_of({"--seed", "--name"}), "");
}

std::string printed(const std::vector<std::string>& words) {
  Line line;
  testing::internal::CaptureStdout();
  EXPECT_EQ(line.line_.run(words), ExitCode::done);
  EXPECT_EQ(line.runs_, 0);
  return testing::internal::GetCapturedStdout();
}

TEST(CommandLine, HelpAndVersionArePrinted) {
  EXPECT_EQ(printed({"--version"}), "basket 7\n");
  const std::string all = printed({"--help"}), fill = printed({"fill", "--help"});
  for (const char* part : {"Fills baskets.\nUsage: basket [OPTIONS] SUBCOMMAND\n", "  fill  ", "put something into it\n",
                           "  eat  ", "\nThat is all.\n"}) {
    EXPECT_NE(all.find(part), all.npos) << part << all;
  }
  for (const char* part : {"\n  IN FILE [FILE]   ", "\n  -n,--name NAME   ", "\n  --no-mark   ", "\n\nNumbers:\n  --weight",
                           "\n  --washed   ", "is clean\n", "\nThat is all.\n"}) {
    EXPECT_NE(fill.find(part), fill.npos) << part << fill;
  }
}

}  // namespace
}  // namespace biseam::tool
