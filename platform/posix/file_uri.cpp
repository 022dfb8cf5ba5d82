#include "platform/posix/file_uri.h"

#include <unistd.h>

#include <algorithm>
#include <optional>

#include "platform/files.h"

namespace kwo::platform {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

std::string OwnHost() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

bool SameName(std::string_view one, std::string_view other) {
  const auto lower = [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

int HexDigit(char c) {
  if ('0' <= c && c <= '9') return c - '0';
  if ('A' <= c && c <= 'F') return c - 'A' + 10;
  if ('a' <= c && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Takes back the percent encoding, byte by byte; nothing where it is broken.
std::optional<std::string> Unescaped(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const int high = HexDigit(text[i + 1]), low = HexDigit(text[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

bool Unreserved(char c) {
  constexpr std::string_view kPlain = "-._~/";
  return ('0' <= c && c <= '9') || ('A' <= c && c <= 'Z') || ('a' <= c && c <= 'z') ||
         kPlain.find(c) != std::string_view::npos;
}

}  // namespace

std::string PathOfFileUri(std::string_view uri) {
  constexpr std::string_view kScheme = "file:", kSlashes = "//";
  if (!SameName(uri.substr(0, kScheme.size()), kScheme)) return "";
  std::string_view rest = uri.substr(kScheme.size());
  if (rest.starts_with(kSlashes)) {
    // Behind two slashes stands a host, which must be this one.
    rest.remove_prefix(kSlashes.size());
    const std::string_view host = rest.substr(0, rest.find('/'));
    if (!host.empty() && !SameName(host, "localhost") && !SameName(host, OwnHost())) return "";
    rest.remove_prefix(host.size());
  }
  const std::optional<std::string> bytes = Unescaped(rest);
  if (!bytes || !bytes->starts_with('/') || bytes->find('\\') != std::string::npos ||
      bytes->find('\0') != std::string::npos)
    return "";
  return FromMachinePath(bytes->c_str());
}

std::string FileUriOf(std::string_view path) {
  std::string uri = "file://";
  for (const char c : ToMachinePath(std::string(path).c_str())) {
    if (Unreserved(c)) {
      uri += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    uri += '%';
    uri += kDigits[byte >> 4];
    uri += kDigits[byte & 15];
  }
  return uri;
}

}  // namespace kwo::platform
