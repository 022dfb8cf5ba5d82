#include "platform/decoding.h"

#include <iconv.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iterator>
#include <vector>

#include "platform/posix/language.h"

namespace kwo::platform {
namespace {

constexpr char kReplacement[] = "\uFFFD";

struct CodePage {
  const char* name;
  bool twoBytes;
  std::vector<std::string_view> languages;
};

const CodePage kWestern{"CP1252", false, {}};
// A language of one country stands in front of the language.
const CodePage kPages[] = {
    {"CP950", true, {"zh_TW", "zh_HK", "zh_MO"}},
    {"CP936", true, {"zh"}},
    {"CP932", true, {"ja"}},
    {"CP949", true, {"ko"}},
    {"CP1250", false, {"cs", "sk", "pl", "hu", "ro", "sl", "hr", "bs", "sq"}},
    {"CP1254", false, {"tr", "az", "uz"}},
    {"CP1251", false, {"ru", "uk", "be", "bg", "mk", "sr", "kk", "ky", "mn", "tg", "tt"}},
    {"CP1253", false, {"el"}},
    {"CP1255", false, {"he", "yi"}},
    {"CP1256", false, {"ar", "fa", "ur", "ug"}},
    {"CP1257", false, {"et", "lv", "lt"}},
    {"CP1258", false, {"vi"}},
    {"CP874", false, {"th"}},
};

std::atomic<const CodePage*> userPage = &kWestern;

// Turns single characters of one code page into UTF-8.
class Converter {
 public:
  ~Converter() { Close(); }

  void Use(const CodePage& page) {
    if (page_ == &page) return;
    Close();
    page_ = &page;
    converter_ = iconv_open("UTF-8", page.name);
  }
  // Appends the character that these bytes are, if they are one.
  bool Append(std::string_view bytes, std::string& text) {
    if (converter_ == kNone) return false;
    char output[16], *to = output;
    char* from = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size(), room = sizeof output;
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter_, &from, &left, &to, &room) == static_cast<std::size_t>(-1)) return false;
    text.append(output, to);
    return true;
  }

 private:
  static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

  void Close() {
    if (converter_ != kNone) iconv_close(converter_);
  }

  const CodePage* page_ = nullptr;
  iconv_t converter_ = kNone;
};

bool IsHigh(char byte) {
  return static_cast<unsigned char>(byte) >= 0x80;
}

// The length of the UTF-8 sequence at the start of `run`, and whether the run ends inside it; 0 if
// none can begin so.
std::size_t SequenceLength(std::string_view run, bool& cut) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(run[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead >= 0xF0 && lead <= 0xF4   ? 4
                             : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xC2 && lead <= 0xDF ? 2
                                                            : 0;
  cut = length > run.size();
  for (std::size_t i = 1; i < std::min(length, run.size()); ++i)
    if (byte(i) > 0xBF || byte(i) < 0x80) return 0;
  if (length >= 3 && run.size() > 1) {
    // Longer than need be, half of a pair, or beyond the last character.
    const unsigned char next = byte(1);
    if ((lead == 0xE0 && next < 0xA0) || (lead == 0xED && next > 0x9F) ||
        (lead == 0xF0 && next < 0x90) || (lead == 0xF4 && next > 0x8F))
      return 0;
  }
  return length;
}

bool BeginsCharacter(char byte) {
  return (byte & 0xC0) != 0x80;
}

struct Utf8Look {
  bool valid = true;      // but perhaps for the cut
  bool cut = false;       // at its end
  std::size_t whole = 0;  // bytes of whole sequences
};

Utf8Look LookAt(std::string_view run) {
  Utf8Look look;
  while (look.valid && !look.cut && look.whole < run.size()) {
    const std::size_t length = SequenceLength(run.substr(look.whole), look.cut);
    look.valid = length > 0;
    if (!look.cut) look.whole += length;
  }
  return look;
}

std::size_t EndOfRun(std::string_view bytes, std::size_t start) {
  return static_cast<std::size_t>(
      std::find_if_not(bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end(), IsHigh) -
      bytes.begin());
}

std::size_t StartOfRun(std::string_view bytes, std::size_t from) {
  return static_cast<std::size_t>(
      std::find_if(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(), IsHigh) -
      bytes.begin());
}

bool HoldsSequence(std::string_view bytes) {
  for (std::size_t at = StartOfRun(bytes, 0); at < bytes.size();) {
    const std::size_t end = EndOfRun(bytes, at);
    const Utf8Look look = LookAt(bytes.substr(at, end - at));
    if (look.valid && look.whole > 0) return true;
    at = StartOfRun(bytes, end);
  }
  return false;
}

// Decodes a run by the user's code page and gives where it ends, which may be one byte behind.
std::size_t DecodeByPage(std::string_view bytes, std::size_t start, std::size_t end,
                         std::string& text) {
  thread_local Converter converter;
  const CodePage& page = *userPage.load();
  converter.Use(page);
  std::size_t at = start;
  while (at < end) {
    if (converter.Append(bytes.substr(at, 1), text)) {
      ++at;
    } else if (page.twoBytes && at + 1 < bytes.size() &&
               converter.Append(bytes.substr(at, 2), text)) {
      at += 2;
    } else {
      text += kReplacement;
      ++at;
    }
  }
  return at;
}

}  // namespace

void TellLanguage(const std::string& language) {
  const CodePage* found = &kWestern;
  for (const CodePage& page : kPages)
    for (std::string_view one : page.languages)
      if (found == &kWestern && language.starts_with(one) &&
          (language.size() == one.size() || language[one.size()] == '_'))
        found = &page;
  userPage = found;
}

std::string Decoded(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  const bool holdsSequence = HoldsSequence(bytes);
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t start = StartOfRun(bytes, at), end = EndOfRun(bytes, start);
    text += bytes.substr(at, start - at);
    const Utf8Look look = LookAt(bytes.substr(start, end - start));
    if (look.valid && (!look.cut || holdsSequence)) {
      text += bytes.substr(start, look.whole);
      at = end;
    } else {
      at = DecodeByPage(bytes, start, end, text);
    }
  }
  return text;
}

std::size_t CharacterCount(std::string_view bytes) {
  const std::string text = Decoded(bytes);
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

std::string FirstCharacters(std::string_view bytes) {
  std::string text = Decoded(bytes);
  std::size_t at = 0;
  for (std::size_t characters = 0; at < text.size(); ++at)
    if (BeginsCharacter(text[at]) && characters++ == kMostCharacters) break;
  text.resize(at);
  return text;
}

bool IsOfNameLength(std::string_view bytes) {
  return bytes.size() <= kMostCharacters ||
         (bytes.size() <= kMostBytes && CharacterCount(bytes) <= kMostCharacters);
}

}  // namespace kwo::platform
