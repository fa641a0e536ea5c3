// SPDX-License-Identifier: Apache-2.0
// Formatted text: every conversion, in four locales, with everything that can be wrong in a format.
#include "marlo110k/printf.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

#include "platform/base/text.h"
#include "testing/locales.h"
#include "testing/random.h"

namespace {

using testing_support::LocaleScope;

class Printf : public ::testing::Test {
 protected:
  LocaleScope english_{testing_support::kEnglish};
};

template <class... Arguments>
std::u16string Print(const char16_t* format, Arguments... arguments) {
  char16_t buffer[4096];
  uint32_t written = 0;
  EXPECT_EQ(S_OK, ZrCchPrintF(buffer, 4096, &written, format, arguments...)) << plat::ToUtf8(format);
  const std::u16string text(buffer, written);
  EXPECT_EQ(0, buffer[written]);
  char16_t unbounded[4096];
  EXPECT_EQ(static_cast<int32_t>(text.size()), ZrPrintF(unbounded, format, arguments...));
  EXPECT_EQ(text, unbounded);
  return text;
}

std::string Narrow(const std::u16string& text) { return plat::ToUtf8(text.c_str()); }
std::u16string Wide(const std::string& text) { return plat::FromUtf8(text.c_str()); }

TEST_F(Printf, EscapesAndPlainText) {
  const struct {
    const char16_t* format;
    const char16_t* text;
  } kRows[] = {
      {u"", u""},
      {u"plain", u"plain"},
      {u"$$", u"$"},
      {u"100%%", u"100%"},
      {u"$%", u"%"},
      {u"$$$%%%", u"$%%"},
      {u"%5", u"%5"},
      {u"$5", u"$5"},
      {u"a%", u"a%"},
      {u"a$", u"a$"},
      {u"%-+ #0123.456", u"%-+ #0123.456"},
      {u"$(", u"$("},
      {u"$()", u"$()"},
      {u"$(Abc", u"$(Abc"},
      {u"$(Abc %d", u"$(Abc %d"},
      {u"$(Unknown)", u"$(Unknown)"},
      {u"($(Unknown)$(Other))", u"($(Unknown)$(Other))"},
      {u"$(12", u"$(12"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.text, Print(row.format)) << Narrow(row.format);
  }
  // Only "$(" opens a token: behind "%" the text runs on to the first conversion letter, here "o".
  EXPECT_EQ(u"17wn", Print(u"%(Unknown", 15));
}

TEST_F(Printf, SeparatorsOfTheLocale) {
  EXPECT_EQ(u".|,|:", Print(u"$*|$,|$:"));
  EXPECT_EQ(u".|,|:", Print(u"%*|%,|%:"));
  EXPECT_EQ(u":|.|,|.|.", Print(u"$!:|$!.|$!,|$&:|$&."));
  EXPECT_EQ(u"x|y", Print(u"$!x|$&y"));  // nothing written, the character stays
  EXPECT_EQ(u"", Print(u"%!"));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo", Print(u"$d Hz$, %d Bit$, %s", 44100, 16, u"Stereo"));
  const LocaleScope german(testing_support::kGerman);
  EXPECT_EQ(u",|;|:", Print(u"$*|$,|$:"));
  EXPECT_EQ(u"44.100 Hz; 16 Bit; Stereo", Print(u"$d Hz$, %d Bit$, %s", 44100, 16, u"Stereo"));
}

/// The C library prints the same conversion with the size prefix that it knows.
template <class Value>
void ExpectAsTheCLibrary(const std::string& flags, const char* ourSize, const char* theirSize, char type, Value value) {
  const std::string ours = "<%" + flags + ourSize + type + ">";
  const std::string theirs = "<%" + flags + theirSize + type + ">";
  char expected[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(expected, sizeof expected, theirs.c_str(), value);
#pragma GCC diagnostic pop
  EXPECT_EQ(expected, Narrow(Print(Wide(ours).c_str(), value))) << ours << " of " << value;
}

TEST_F(Printf, IntegersAsTheCLibraryPrintsThem) {
  const int32_t values[] = {
      0, 1, -1, 9, 10, 255, -256, 12345, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()};
  const int64_t wide[] = {0,
                          -1,
                          4294967296,
                          -4294967297,
                          9999999999,
                          std::numeric_limits<int64_t>::max(),
                          std::numeric_limits<int64_t>::min()};
  for (const char* flags : {"", "-", "0", "#", "-#", "0#"}) {
    for (const char* shape : {"", "1", "6", "12", ".0", ".1", ".5", "8.3", "3.8", "24"}) {
      for (const char type : {'d', 'i', 'u', 'o', 'x', 'X'}) {
        const std::string lead(flags);
        const bool isDecimal = type == 'd' || type == 'i' || type == 'u';
        if (isDecimal && lead.find('#') != std::string::npos) continue;
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + shape, "", "", type, value);
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + shape, "l", "", type, value);
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + shape, "I32", "", type, value);
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + shape, "h", "h", type, value);
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + shape, "hh", "hh", type, value);
        for (const long long value : wide) ExpectAsTheCLibrary(lead + shape, "I64", "ll", type, value);
        for (const long long value : wide) ExpectAsTheCLibrary(lead + shape, "I", "ll", type, value);
        for (const long long value : wide) ExpectAsTheCLibrary(lead + shape, "ll", "ll", type, value);
        if (type != 'd' && type != 'i') continue;
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + "+" + shape, "", "", type, value);
        for (const int32_t value : values) ExpectAsTheCLibrary(lead + " " + shape, "", "", type, value);
      }
    }
  }
}

TEST_F(Printf, RealsAsTheCLibraryPrintsThem) {
  const double values[] = {0.0,
                           -0.0,
                           1.0,
                           -1.5,
                           0.1,
                           9.995,
                           0.5,
                           99999.5,
                           123456.0,
                           1234567.0,
                           1e-4,
                           1e-5,
                           0.00001234,
                           1e15,
                           1e16,
                           1e21,
                           3.141592653589793,
                           1e100,
                           5e-324,
                           1.7976931348623157e308,
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity()};
  for (const char* flags : {"", "-", "0", "+", " ", "#", "-+", "0#"}) {
    for (const char* shape : {"", "1", "12", ".0", ".1", ".3", "14.2", ".17", ".40"}) {
      for (const char type : {'e', 'E', 'f', 'g', 'G'}) {
        for (const double value : values) {
          if (type == 'f' && value > 1e200 && value < std::numeric_limits<double>::infinity()) continue;  // cut, below
          ExpectAsTheCLibrary(std::string(flags) + shape, "", "", type, value);
        }
      }
    }
  }
}

TEST_F(Printf, RandomRealsAsTheCLibraryPrintsThem) {
  testing_support::Random random(20101);
  SCOPED_TRACE(random.Label());
  for (int i = 0; i < 20000; ++i) {
    double value = static_cast<double>(static_cast<int64_t>(random.Bits())) / 1048576.0;
    if ((random.Bits() & 1) != 0) value /= 1e18;
    const char types[] = {'e', 'f', 'g'};
    const std::string shape = std::to_string(random.Bits() % 20) + "." + std::to_string(random.Bits() % 20);
    ExpectAsTheCLibrary(shape, "", "", types[random.Bits() % 3], value);
  }
}

TEST_F(Printf, NumberTextsEndAt259Characters) {
  char16_t buffer[1024];
  uint32_t written = 0;
  // 309 digits: what is left out is told.
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrCchPrintF(buffer, 1024, &written, u"%f!", 1e308));
  EXPECT_EQ(260U, written);
  EXPECT_EQ(u'!', buffer[259]);
  EXPECT_EQ(259U, Print(u"%300d", 5).size());
  EXPECT_EQ(259U, Print(u"%65536d", 5).size());
  EXPECT_EQ(259U, Print(u"%99999999999999999999d", 5).size());
  EXPECT_LE(Print(u"%-300.300d", 5).size(), 259U);
  EXPECT_LE(Print(u"$300d", 5).size(), 259U);
  EXPECT_LE(Print(u"%300.299z", 5).size(), 259U);
  EXPECT_LE(Print(u"%.99999f", 0.5).size(), 259U);
}

TEST_F(Printf, TextsAndCharacters) {
  EXPECT_EQ(u"[abc][  abc][abc  ][ab][   ab]",
            Print(u"[%s][%5s][%-5s][%.2s][%5.2s]", u"abc", u"abc", u"abc", u"abc", u"abc"));
  EXPECT_EQ(u"[]", Print(u"[%.0s]", u"abc"));
  EXPECT_EQ(u"[(null)]", Print(u"[%s]", static_cast<const char16_t*>(nullptr)));
  EXPECT_EQ(u"[\u00E4\u20AC]", Print(u"[%hs]", "\xE4\x80"));
  EXPECT_EQ(u"[ \u00E4]", Print(u"[%2.1hs]", "\xE4\x80"));
  EXPECT_EQ(u"[abc]", Print(u"[%ls]", u"abc"));
  EXPECT_EQ(u"[x][  x][x  ][\u20AC][]", Print(u"[%c][%3c][%-3c][%hc][%c]", u'x', u'x', u'x', 0x80, 0));
  EXPECT_EQ(u"[\u65E5]", Print(u"[$c]", u'\u65E5'));
  const std::u16string longText(3000, u'x');
  EXPECT_EQ(longText, Print(u"%s", longText.c_str()));
  // A precision bounds the reading of a text that has no end.
  const char16_t unterminated[] = {u'a', u'b', u'c'};
  EXPECT_EQ(u"abc", Print(u"%.3s", unterminated));
}

TEST_F(Printf, MixedArgumentsStayInStep) {
  EXPECT_EQ(u"1 2.5 three 4 5 6.25 7 8 9",
            Print(u"%d %.1f %s %I64d %u %g %c %x %d", 1, 2.5, u"three", int64_t{4}, 5, 6.25, u'7', 8, 9));
  // What means nothing inside a conversion is passed over; the argument is taken.
  EXPECT_EQ(u"1-2", Print(u"%$d-%d", 1, 2));
  EXPECT_EQ(u"1-2", Print(u"%y5d-%d", 1, 2));
}

TEST_F(Printf, LocalisedNumbers) {
  const struct {
    const plat::LocaleFacts* locale;
    const char16_t* text;
  } kRows[] = {
      {&testing_support::kEnglish, u"-1,234,567|1,234,567.500000|0.25|1234.5|12.345|123.45|12,345.67|7B"},
      {&testing_support::kGerman, u"-1.234.567|1.234.567,500000|0,25|1234,5|12.345|123,45|12.345,67|7B"},
      {&testing_support::kFrench,
       u"-1\u202F234\u202F567|1\u202F234\u202F567,500000|0,25|1234,5|12.345|123,45|12\u202F345,67|7B"},
      {&testing_support::kJapanese, u"-1,234,567|1,234,567.500000|0.25|1234.5|12.345|123.45|12,345.67|7B"},
      // The locale's own negative sign gives way to "-".
      {&testing_support::kSwedish,
       u"-1\u00A0234\u00A0567|1\u00A0234\u00A0567,500000|0,25|1234,5|12.345|123,45|12\u00A0345,67|7B"},
  };
  for (const auto& row : kRows) {
    const LocaleScope scope(*row.locale);
    EXPECT_EQ(row.text,
              Print(u"$d|$f|$g|$g|%.3f|%.2z|$.2z|$X", -1234567, 1234567.5, 0.25, 1234.5, 12.345, 12345, 1234567, 0x7B));
  }
}

TEST_F(Printf, LocalisedFormsAtTheirEdges) {
  EXPECT_EQ(u"4,294,967,295", Print(u"$u", 0xFFFFFFFFU));
  EXPECT_EQ(u"-9,223,372,036,854,775,808", Print(u"$I64d", std::numeric_limits<int64_t>::min()));
  EXPECT_EQ(u"18,446,744,073,709,551,615", Print(u"$Iu", std::numeric_limits<uint64_t>::max()));
  EXPECT_EQ(u"999|1,000|0", Print(u"$d|$d|$d", 999, 1000, 0));
  EXPECT_EQ(u"     1,234|1,234     |001,234|+1,234", Print(u"$9d|$-9d|$06d|$+d", 1234, 1234, 1234, 1234));
  EXPECT_EQ(u"1e+20|1.5E-07", Print(u"$g|$G", 1e20, 1.5e-7));
  EXPECT_EQ(u"inf|-inf",
            Print(u"$f|$g", std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()));
  EXPECT_EQ(u"1.000000e+03", Print(u"$e", 1000.0));
}

TEST_F(Printf, FixedPoint) {
  EXPECT_EQ(u"123.45", Print(u"%.2z", 12345));
  EXPECT_EQ(u"12345", Print(u"%z", 12345));
  EXPECT_EQ(u"12345", Print(u"%.0z", 12345));
  EXPECT_EQ(u"12,345", Print(u"$z", 12345));
  EXPECT_EQ(u"0.05|-0.05|0.00|-1.00", Print(u"%.2z|%.2z|%.2z|%.2z", 5, -5, 0, -100));
  EXPECT_EQ(u"-2,147,483.648", Print(u"$.3z", std::numeric_limits<int32_t>::min()));
  EXPECT_EQ(u"0.0000000000012345", Print(u"%.16z", 12345));
  EXPECT_EQ(u"  1.5|1.5  ", Print(u"%5.1z|%-5.1z", 15, 15));
}

TEST_F(Printf, Tokens) {
  EXPECT_EQ(1, ZrPrintF_AddToken(u"AppName", u"Studio 100% $(Other)"));
  // Case doesn't count, and a value isn't expanded again.
  EXPECT_EQ(u"<Studio 100% $(Other)>", Print(u"<$(appname)>"));
  EXPECT_EQ(1, ZrPrintF_AddToken(u"APPNAME", u"Two"));
  EXPECT_EQ(u"Two Two", Print(u"$(AppName) $(AppName)"));
  EXPECT_EQ(1, ZrPrintF_AddToken(u"Other", u""));
  EXPECT_EQ(u"[]", Print(u"[$(Other)]"));
  EXPECT_EQ(1, ZrPrintF_DeleteToken(u"oTHER"));
  EXPECT_EQ(0, ZrPrintF_DeleteToken(u"Other"));
  EXPECT_EQ(1, ZrPrintF_DeleteToken(u"AppName"));
  EXPECT_EQ(u"$(AppName)", Print(u"$(AppName)"));
  EXPECT_EQ(0, ZrPrintF_AddToken(nullptr, u"x"));
  EXPECT_EQ(0, ZrPrintF_DeleteToken(nullptr));

  const std::u16string longest(260, u'n');
  const std::u16string tooLong(261, u'n');
  EXPECT_EQ(1, ZrPrintF_AddToken(longest.c_str(), u"found"));
  EXPECT_EQ(1, ZrPrintF_AddToken(tooLong.c_str(), u"never"));
  EXPECT_EQ(u"found", Print((u"$(" + longest + u")").c_str()));
  EXPECT_EQ(u"$(" + tooLong + u")", Print((u"$(" + tooLong + u")").c_str()));
  ZrPrintF_DeleteToken(longest.c_str());
  ZrPrintF_DeleteToken(tooLong.c_str());
}

TEST_F(Printf, ManyTokensStaySorted) {
  for (int i = 0; i < 200; ++i) {
    char16_t name[32];
    ZrPrintF(name, u"Token%d", i * 7919 % 200);
    EXPECT_EQ(1, ZrPrintF_AddToken(name, name + 5));
  }
  for (int i = 0; i < 200; ++i) {
    char16_t format[32];
    ZrPrintF(format, u"$$(tOKEN%d)", i);
    EXPECT_EQ(Wide(std::to_string(i)), Print(format));
    ZrPrintF(format, u"Token%d", i);
    EXPECT_EQ(1, ZrPrintF_DeleteToken(format));
  }
}

TEST_F(Printf, TokensOfTheConventions) {
  EXPECT_EQ(u":|.|,", Print(u"$(SMPTE.Whole)|$(SMPTE.NonDrop)|$(SMPTE.Drop)"));
  EXPECT_EQ(u"hr:mn:sc.fr|hr:mn:sc,fr", Print(u"$(SMPTE.Label.NonDrop)|$(SMPTE.Label.Drop)"));
  EXPECT_EQ(u"hours:minutes:seconds.frames", Print(u"$(SMPTE.Label.NonDrop.Full)"));
  EXPECT_EQ(u"hours:minutes:seconds,frames", Print(u"$(SMPTE.Label.Drop.Full)"));
  EXPECT_EQ(u".|.|ms.bt.tk|measures.beats.ticks", Print(u"$(m.b)|$(b.t)|$(MusicTime.Label)|$(MusicTime.Label.Full)"));
  // A host that changes the token changes no item.
  ZrPrintF_AddToken(u"m.b", u"/");
  EXPECT_EQ(u"/|.", Print(u"$(m.b)|$&:"));
  ZrLang_GetInternationals(nullptr, 0);
  EXPECT_EQ(u".", Print(u"$(m.b)"));
}

TEST_F(Printf, NumbersInTheText) {
  EXPECT_EQ(u"1,234,567.5", Print(u"$(1234567.5)"));
  EXPECT_EQ(u"-1,000", Print(u"$(-1000)"));
  EXPECT_EQ(u"0.5", Print(u"$(.5)"));
  EXPECT_EQ(u"1,234.5", Print(u"$(1,234.5)"));
  EXPECT_EQ(u"12", Print(u"$(1x2)"));
  const LocaleScope german(testing_support::kGerman);
  EXPECT_EQ(u"1.234.567,5", Print(u"$(1234567.5)"));
}

TEST_F(Printf, BoundedForm) {
  const struct {
    uint32_t size;
    const char16_t* format;
    HRESULT result;
    const char16_t* text;
  } kRows[] = {
      {1, u"%s", S_OK, u""},  // one character of room: the walk doesn't begin
      {1, u"abc", S_OK, u""},
      {4, u"abc", S_OK, u"abc"},
      {3, u"abc", S_OK, u"ab"},                     // a cut in plain text isn't told
      {4, u"%s", S_OK, u"xyz"},                     //
      {3, u"%s", ZR_E_BUFFER_TOO_SMALL, u"xy"},     //
      {4, u"ab%s", ZR_E_BUFFER_TOO_SMALL, u"abx"},  //
      {3, u"ab%s", S_OK, u"ab"},                    // never reached
      {5, u"%s$(SMPTE.Label.Drop)", ZR_E_BUFFER_TOO_SMALL, u"xyzh"},
      {6, u"$(Nobody)", ZR_E_BUFFER_TOO_SMALL, u"$(Nob"},
      {3, u"$(1234)", ZR_E_BUFFER_TOO_SMALL, u"1,"},
      {3, u"%5", S_OK, u"%5"},
      {2, u"%5", S_OK, u"%"},
  };
  for (const auto& row : kRows) {
    char16_t buffer[16];
    std::fill(std::begin(buffer), std::end(buffer), u'~');
    uint32_t written = 99;
    EXPECT_EQ(row.result, ZrCchPrintF(buffer, row.size, &written, row.format, u"xyz")) << Narrow(row.format);
    EXPECT_EQ(std::u16string(row.text), buffer) << Narrow(row.format);
    EXPECT_EQ(std::u16string(row.text).size(), written);
    for (size_t i = row.size; i < 16; ++i) EXPECT_EQ(u'~', buffer[i]);
    EXPECT_EQ(row.result, ZrCchPrintF(buffer, row.size, nullptr, row.format, u"xyz"));
  }
  uint32_t written = 99;
  char16_t untouched = u'~';
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrCchPrintF(&untouched, 0, &written, u"x"));
  EXPECT_EQ(u'~', untouched);
  EXPECT_EQ(0U, written);
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrCchPrintF(nullptr, 10, &written, u"x"));
}

/// At every size the text is the beginning of the whole one.
TEST_F(Printf, EverySizeGivesABeginning) {
  const char16_t* format = u"a%sb$(SMPTE.Label.Drop)c%08.3fd$,e$!:f%5cg$dh%hsi";
  const auto print = [&](char16_t* buffer, uint32_t size, uint32_t* written) {
    return ZrCchPrintF(buffer, size, written, format, u"text", -1.5, u'x', 1234567, "ansi");
  };
  char16_t whole[256];
  uint32_t length = 0;
  ASSERT_EQ(S_OK, print(whole, 256, &length));
  for (uint32_t size = 1; size <= length + 1; ++size) {
    char16_t buffer[256];
    std::fill(std::begin(buffer), std::end(buffer), u'~');
    uint32_t written = 0;
    print(buffer, size, &written);
    EXPECT_EQ(size - 1, written);
    EXPECT_EQ(std::u16string(whole, size - 1), buffer);
    EXPECT_EQ(u'~', buffer[size]);
  }
}

TEST_F(Printf, ComposedTexts) {
  char16_t buffer[64];
  EXPECT_EQ(12U, ZrComposeStr(buffer, 64, u"%2 before %1.", u"a", u"bb"));
  EXPECT_EQ(std::u16string(u"bb before a."), buffer);
  const struct {
    const char16_t* format;
    const char16_t* text;
  } kRows[] = {
      {u"%1 %1", u"one one"},
      {u"%3!d!", u"-42"},
      {u"%3!05d!|%4!X!", u"-0042|BEEF"},
      {u"%2!5s!|%2!-5s!|", u"  two|two  |"},
      {u"a%nb", u"a\r\nb"},
      {u"100%%", u"100%"},
      {u"stop%0here", u"stop"},
      {u"%.%!% ", u".! "},
      {u"end%", u"end%"},
      {u"%1!", u"one!"},
      {u"%1!d", u"one!d"},
      {u"$(AppName)", u"$(AppName)"},
  };
  for (const auto& row : kRows) {
    const uint32_t written = ZrComposeStr(buffer, 64, row.format, u"one", u"two", -42, 0xBEEF);
    EXPECT_EQ(std::u16string(row.text), buffer) << Narrow(row.format);
    EXPECT_EQ(std::u16string(row.text).size(), written);
  }
  EXPECT_EQ(0U, ZrComposeStr(buffer, 3, u"%1", u"one"));
  EXPECT_EQ(0, buffer[0]);
  EXPECT_EQ(3U, ZrComposeStr(buffer, 4, u"%1", u"one"));
  EXPECT_EQ(0U, ZrComposeStr(nullptr, 4, u"%1", u"one"));
}

}  // namespace
