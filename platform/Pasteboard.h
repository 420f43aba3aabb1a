#pragma once

#include <string>

namespace quennel {

/// What data on a pasteboard, or in a drag, may be.
namespace pasteboard_type {
inline constexpr const char* string = "public.utf8-plain-text";
inline constexpr const char* tiff = "public.tiff";
inline constexpr const char* fileURL = "public.file-url";
}  // namespace pasteboard_type

/// The clipboard, by which the user carries things to other programs. Main thread only.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;

  virtual void clearContents() = 0;

  /// Puts a text there as data of this type.
  virtual void setString(const std::string& text, const std::string& type) = 0;
};

/// One thing on a pasteboard.
class PasteboardItem {
 public:
  virtual ~PasteboardItem() = default;

  virtual void setData(const std::string& data, const std::string& type) = 0;
};

}  // namespace quennel
