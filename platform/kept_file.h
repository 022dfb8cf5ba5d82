#pragma once

#include <string>
#include <string_view>

namespace kwo::platform {

/// A file that the program reads at its start and writes at its end.  What another program has
/// written there in between is not lost: it is set aside under another name.  One thread.
class KeptFile {
 public:
  /// What stands at the path now has been read.
  void Note(const char* path);
  /// What was noted, for another program that goes on in this one's place.
  const std::string& Noted() const { return stamp_; }
  void GoOnFrom(const std::string& noted) { stamp_ = noted; }
  /// Replaces the file; one that has not been noted becomes NAME-OLD.EXT first, or NAME-OLD-2.EXT
  /// to NAME-OLD-9.EXT where that stands.  False leaves everything as it was.
  bool Replace(const char* path, std::string_view contents);

 private:
  std::string stamp_;  // of what stood there; empty for nothing
};

}  // namespace kwo::platform
