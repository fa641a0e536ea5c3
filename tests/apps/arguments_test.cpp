// SPDX-License-Identifier: Apache-2.0
// What the command line's words, numbers, suffixes and maps are taken for.
#include "arguments.h"

#include <gmock/gmock.h>

#include <cmath>

#include "channel_map.h"
#include "errors.h"
#include "mix_input.h"
#include "numbers.h"
#include "sample_format.h"
#include "unicode.h"

namespace {

using host::Arguments;
using host::Option;
using testing::ElementsAre;

constexpr Option kOptions[] = {{"--type", true}, {"--gain", true}, {"--json", false}};

Arguments Parse(const std::vector<std::string>& words) { return Arguments(words, kOptions); }

TEST(ArgumentsParse, OptionsStandAnywhereAndTakeWhatFollows) {
  const Arguments arguments = Parse({"a.wav", "--gain", "-6", "--json", "--type=pcm8", "-", "--", "--json", "-x"});
  EXPECT_THAT(arguments.Positionals(), ElementsAre("a.wav", "-", "--json", "-x"));
  ASSERT_TRUE(arguments.Value("--gain"));
  EXPECT_EQ(*arguments.Value("--gain"), "-6");
  EXPECT_EQ(*arguments.Value("--type"), "pcm8");
  EXPECT_TRUE(arguments.Has("--json"));
  EXPECT_EQ(Parse({"--type", "--json"}).Value("--json"), nullptr);
}

TEST(ArgumentsParse, WrongWordsAreRefused) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{"--tpye", "pcm8"},
                                                {"--type"},
                                                {"--type="},
                                                {"--type", ""},
                                                {"--json=1"},
                                                {"--json", "--json"},
                                                {"-j"},
                                                {""},
                                                {"--gain", "1", "--gain=2"},
                                                {"--jso"}}) {
    EXPECT_THROW(Parse(words), host::UsageError) << testing::PrintToString(words);
  }
}

TEST(ArgumentsParse, HelpIsSeenBeforeTheEndOfOptionsOnly) {
  EXPECT_TRUE(Arguments::AskForHelp(std::vector<std::string>{"x", "--help"}));
  EXPECT_TRUE(Arguments::AskForHelp(std::vector<std::string>{"-h"}));
  EXPECT_FALSE(Arguments::AskForHelp(std::vector<std::string>{"--", "--help"}));
}

TEST(Numbers, WholeTextOrNothing) {
  struct Row {
    const char* text;
    std::optional<double> number;
  };
  for (const Row& row :
       {Row{"0", 0.0}, {"-2.5", -2.5}, {"+3", 3.0},  {".5", 0.5}, {"-.5", -0.5}, {"1e-3", 1e-3}, {"", {}},
        {"-", {}},     {"+", {}},      {"+-1", {}},  {"--1", {}}, {"1 ", {}},    {" 1", {}},     {"1,5", {}},
        {"0x10", {}},  {"inf", {}},    {"-inf", {}}, {"nan", {}}, {"1e999", {}}, {"1.2.3", {}},  {".", {}}}) {
    EXPECT_EQ(host::ParseNumber(row.text), row.number) << '"' << row.text << '"';
  }
  EXPECT_EQ(host::ParseCount("18446744073709551615"), UINT64_MAX);
  for (const char* text : {"", "-1", "+1", "1.0", "18446744073709551616", "1x"}) {
    EXPECT_EQ(host::ParseCount(text), std::nullopt) << text;
  }
}

TEST(Numbers, SecondsAndGains) {
  EXPECT_EQ(host::ParseSeconds("1.25"), 1.25);
  for (const char* text : {"-1", "-0", "1s", "1e10", "inf"}) EXPECT_EQ(host::ParseSeconds(text), std::nullopt) << text;
  EXPECT_EQ(host::ParseGain("-2"), -2.0);
  EXPECT_EQ(host::ParseGain("20dB"), 10.0);
  EXPECT_EQ(host::ParseGain("0DB"), 1.0);
  EXPECT_NEAR(host::ParseGain("-6db").value_or(0), 0.50118723362727, 1e-14);
  for (const char* text : {"dB", "6d", "6 dB", "201dB", "-6dBB", ""})
    EXPECT_EQ(host::ParseGain(text), std::nullopt) << text;
  EXPECT_EQ(host::ParseDecibels("-20"), 0.1);
  // To the nearest frame: 0.5 and above goes up.
  EXPECT_EQ(host::FramesFromSeconds(0.5 / 44100, 44100), 1);
  EXPECT_EQ(host::FramesFromSeconds(0.49 / 44100, 44100), 0);
  EXPECT_EQ(host::FramesFromSeconds(3600, 192000), 691200000);
}

TEST(MixInput, SuffixesAreReadFromTheRightAndOnlyWhenTheyParse) {
  struct Row {
    const char* text;
    const char* path;
    double seconds;
    double gain;
  };
  for (const Row& row : {
           Row{"a.wav", "a.wav", 0, 1},
           {"a.wav@2", "a.wav", 2, 1},
           {"a.wav:0.5", "a.wav", 0, 0.5},
           {"a.wav@1.5:20dB", "a.wav", 1.5, 10},
           {"a.wav:-1", "a.wav", 0, -1},
           {"a@3.wav", "a@3.wav", 0, 1},
           {"take:A.wav", "take:A.wav", 0, 1},
           {"me@home.wav@2", "me@home.wav", 2, 1},
           {"part:2:1", "part:2", 0, 1},
           {"at@5@0", "at@5", 0, 1},
           {"a.wav:0.5@3", "a.wav:0.5", 3, 1},  // The gain stands last; elsewhere it is a name.
           {"a.wav@-1", "a.wav@-1", 0, 1},
           {"a.wav@1:", "a.wav@1:", 0, 1},
           {"a.wav@1:loud", "a.wav@1:loud", 0, 1},
           {"a.wav@:2", "a.wav@", 0, 2},
           {":2", ":2", 0, 1},  // A name has to be left.
           {"@1", "@1", 0, 1},
           {"@1:2", "@1", 0, 2},
       }) {
    const host::MixInput input = host::ParseMixInput(row.text);
    EXPECT_EQ(input.path, row.path) << row.text;
    EXPECT_EQ(input.startSeconds, row.seconds) << row.text;
    EXPECT_EQ(input.gain, row.gain) << row.text;
  }
}

TEST(ChannelMap, ListsOfChannelsAndDashes) {
  const auto swap = host::ParseChannelMap("1,0");
  ASSERT_TRUE(swap);
  EXPECT_THAT(swap->destinations, ElementsAre(1, 0));
  EXPECT_EQ(swap->destinationChannels, 2);
  const auto sparse = host::ParseChannelMap("-,5,-");
  ASSERT_TRUE(sparse);
  EXPECT_THAT(sparse->destinations, ElementsAre(-1, 5, -1));
  EXPECT_EQ(sparse->destinationChannels, 6);
  for (const char* text : {"", "-", "-,-", ",", "0,", ",0", "0,,1", "a", "-1", "0 ,1", "256", "99999999999999999999"}) {
    EXPECT_FALSE(host::ParseChannelMap(text)) << '"' << text << '"';
  }
}

TEST(SampleFormat, ContainersByExtensionAndTypesByContainer) {
  EXPECT_EQ(host::ContainerOfName("a.WAV"), host::Container::kWave);
  EXPECT_EQ(host::ContainerOfName("b.x.w64"), host::Container::kWave64);
  EXPECT_EQ(host::ContainerOfName("c.aif"), host::Container::kAiff);
  EXPECT_EQ(host::ContainerOfName("d.aifc"), host::Container::kAifc);
  for (const char* name : {"wav", "a.mp3", "a.", "a.wav ", ""})
    EXPECT_EQ(host::ContainerOfName(name), std::nullopt) << name;
  using host::Container;
  EXPECT_EQ(host::TypeInContainer(ZRSAMPLETYPE_PCM8, Container::kAiff), ZRSAMPLETYPE_PCM8SIGNED);
  EXPECT_EQ(host::TypeInContainer(ZRSAMPLETYPE_PCM24, Container::kAiff), ZRSAMPLETYPE_PCM24BE);
  EXPECT_EQ(host::TypeInContainer(ZRSAMPLETYPE_PCM16BE, Container::kAifc), ZRSAMPLETYPE_PCM16);
  EXPECT_EQ(host::TypeInContainer(ZRSAMPLETYPE_PCM24UNPACKED, Container::kWave), ZRSAMPLETYPE_PCM24);
  EXPECT_EQ(host::TypeInContainer(ZRSAMPLETYPE_FLOAT32, Container::kAifc), std::nullopt);
}

TEST(Unicode, StrictUtf8) {
  EXPECT_EQ(host::ToUtf16("a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E"), u"a\u00E9\u20AC\U0001D11E");
  for (const char* text : {"\x80", "\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5",
                           "\xC3"
                           "a",
                           "\xE2\x82", "\xFF"}) {
    EXPECT_THROW(host::ToUtf16(text), host::UsageError);
  }
}

}  // namespace
