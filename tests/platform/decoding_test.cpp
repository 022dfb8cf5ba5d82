// Names of no told encoding, and the order of names.

#include "platform/decoding.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/collation.h"
#include "platform/posix/language.h"

namespace kwo::platform {
namespace {

class Decoding : public ::testing::Test {
 protected:
  ~Decoding() override { TellLanguage(""); }
  static std::string In(const char* language, const std::string& bytes) {
    TellLanguage(language);
    return Decoded(bytes);
  }
};

std::string Utf8Of(const char* page, std::string bytes) {
  iconv_t converter = iconv_open("UTF-8", page);
  std::string text(4 * bytes.size(), '\0');
  char *from = bytes.data(), *to = text.data();
  std::size_t left = bytes.size(), room = text.size();
  EXPECT_EQ(0u, iconv(converter, &from, &left, &to, &room)) << page;
  iconv_close(converter);
  text.resize(text.size() - room);
  return text;
}

TEST_F(Decoding, RunsAreUtf8OrInTheLanguagesCodePage) {
  const struct {
    const char *language, *bytes, *text;
  } kCases[] = {
      {"", "plain", "plain"},
      {"", "Zo\xEB", "Zoë"},
      {"", "Zo\xEB\xEB-\xC3\x9Cnder.mp3", "Zoëë-Ünder.mp3"},
      {"", "Zo\xEB-\xC3\x9Cnder.mp3", "Zo-Ünder.mp3"},
      {"", "\x80\x93\x81", "€“\uFFFD"},
      // A sequence that the tag has cut counts where another shows what the text is.
      {"ru_RU", "\xD0\x97\xD0\xB0\xD1", "За"},
      {"ru_RU", "\xD0\x97 \xD0\xB0 \xD1", "З а "},
      {"ru_RU", "\xE2\x82-\xD0\x97", "-З"},
      {"ru_RU", "\xC7\xE0\xF0\xFF", "Заря"},
      {"ru_RU", "\xD1", "С"},
      {"de_DE", "\xC3", "Ã"},
      {"uk", "\xBF", "ї"},
      {"rupee", "\xBF", "¿"},
      {"tr_TR", "\xDDstanbul \xFD", "İstanbul ı"},
      {"ko_KR", "\xBB\xE7\xB6\xFB\xC0\xC7 \xB3\xEB\xB7\xA1", "사랑의 노래"},
      {"ko_KR", "\x8C\x63-\x81\x41\x81\x41x", "똠-갂갂x"},
      {"ja_JP", "\x83\x5C\x83\x8C \xB1\x2E", "ソレ ｱ."},
      {"zh_CN", "\xB0\xAE.mp3", "爱.mp3"},
      {"zh_TW", "\xB3\x5C\xB7\x52", "許愛"},
      {"ja_JP", "\x83", "\uFFFD"},
      // No shorter form, half of a pair, nor anything beyond the last character is UTF-8.
      {"", "\xC0\xAF", "À¯"},
      {"", "\xE0\x80\xAF", "à€¯"},
      {"", "\xED\xA0\x80", "í\u00A0€"},
      {"", "\xF4\x90\x80\x80", "ô\uFFFD€€"},
      {"", "\xF0\x9F\x8E\xB5\xF4\x8F\xBF\xBF", "\U0001F3B5\U0010FFFF"},
  };
  for (const auto& [language, bytes, text] : kCases) {
    EXPECT_EQ(text, In(language, bytes)) << language << ' ' << text;
  }
}

TEST_F(Decoding, WholeCodePagesComeBack) {
  // Some pairs alone are UTF-8 by chance; behind one that can't be they are read as what they are.
  std::string korean, chinese, cyrillic;
  for (int lead = 0xB0; lead <= 0xC8; ++lead)
    for (int trail = 0xA1; trail <= 0xFE; ++trail)
      korean += {char(0xB0), char(0xA1), char(lead), char(trail), ' '};
  EXPECT_EQ(2350, std::count(korean.begin(), korean.end(), ' '));
  EXPECT_EQ(Utf8Of("CP949", korean), In("ko_KR", korean));
  for (int lead = 0xB0; lead <= 0xF7; ++lead)
    for (int trail = 0xA1; trail <= 0xFE - (lead == 0xD7 ? 5 : 0); ++trail)
      chinese += {char(0xB0), char(0xA1), char(lead), char(trail), ' '};
  EXPECT_EQ(6763, std::count(chinese.begin(), chinese.end(), ' '));
  EXPECT_EQ(Utf8Of("GB2312", chinese), In("zh_CN", chinese));
  for (int byte = 0x80; byte <= 0xFF; ++byte)
    if (byte != 0x98) cyrillic += {char(byte), char(0xFF), ' '};
  EXPECT_EQ(Utf8Of("CP1251", cyrillic), In("ru_RU", cyrillic));
}

TEST_F(Decoding, CharactersAreCountedAsTheyAreRead) {
  EXPECT_EQ(7u, CharacterCount("\xBB\xE7 abc\xC3\xA9"));
  TellLanguage("ko");
  EXPECT_EQ(2u, CharacterCount("\xBB\xE7x"));
  const std::string note = "\xF0\x9F\x8E\xB5";
  std::string longest;
  for (int i = 0; i < 255; ++i) longest += note;
  EXPECT_TRUE(IsOfNameLength(longest));
  EXPECT_FALSE(IsOfNameLength(longest + 'x'));
  EXPECT_FALSE(IsOfNameLength(std::string(256, 'x')));
  EXPECT_EQ(longest, FirstCharacters(longest + note));
}

TEST(Collation, HeadlessOrderIsFixedUnlessALanguageIsTold) {
  const std::vector<std::string> names{"b", "A", "a", "1", "_", "\xC3\x84", "a"};
  EXPECT_EQ((std::vector<std::size_t>{4, 3, 2, 6, 1, 0, 5}), SortedOrder(names));
  TellCollation([](const std::vector<std::string>&) { return std::vector<std::size_t>{7}; });
  EXPECT_EQ(std::vector<std::size_t>{7}, SortedOrder(names));
  TellCollation(nullptr);
}

}  // namespace
}  // namespace kwo::platform
