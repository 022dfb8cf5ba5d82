#include "platform/posix/file_uri.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace kwo::platform {
namespace {

std::string OwnHost() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  return name;
}

TEST(FileUri, NamesAPathOfThisMachine) {
  for (const auto& [uri, path] : {
           std::pair<std::string, const char*>{"file:///a/b.mp3", "\\a\\b.mp3"},
           {"file:/a", "\\a"},
           {"FILE:///a", "\\a"},
           {"file://localhost/a", "\\a"},
           {"file://" + OwnHost() + "/a", "\\a"},
           {"file:///%41%2fb%20%e4%C3%a4", "\\A\\b \xe4\xc3\xa4"},
           {"file:///a#b?c", "\\a#b?c"},
           {"file:///a%23b%25", "\\a#b%"},
       })
    EXPECT_EQ(path, PathOfFileUri(uri)) << uri;
}

TEST(FileUri, OfAnotherKindNamesNone) {
  for (const std::string uri :
       {"", "file", "file:", "file:a", "file:%2", "http://localhost/a.mp3", "file://other.host/a",
        "file://localhost", "files:///a", "/a/b.mp3", "file:///a%", "file:///a%4", "file:///a%4g",
        "file:///a%g4", "file:///a%00b", "file:///a%5cb", "file:///a\\b", "file:///%-1"})
    EXPECT_EQ("", PathOfFileUri(uri)) << uri;
}

TEST(FileUri, ComesBackAsItWas) {
  std::string path = "\\";
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') path += static_cast<char>(byte);
  const std::string uri = FileUriOf(path);
  EXPECT_EQ(path, PathOfFileUri(uri));
  for (const char c : uri) EXPECT_TRUE(' ' < c && c < 127) << uri;
  EXPECT_EQ("file:///My%20songs/a-b_c.d~%23%25%C3%A4.mp3",
            FileUriOf("\\My songs\\a-b_c.d~#%\xc3\xa4.mp3"));
}

}  // namespace
}  // namespace kwo::platform
