#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace quennel {

/// An immutable text, without NUL bytes, whose copies share one allocation and are no larger than a
/// pointer: for texts that several owners keep by the ten thousand. Copies may be made and dropped
/// on any thread.
class SharedText {
 public:
  /// A null text: it has no characters to point at.
  SharedText() = default;
  /// Copies `text`, up to its first NUL byte.
  explicit SharedText(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    void* const room = ::operator new(sizeof(Owners) + text.size() + 1);
    _owners = new (room) Owners(1);
    char* const characters = reinterpret_cast<char*>(_owners + 1);
    std::memcpy(characters, text.data(), text.size());
    characters[text.size()] = '\0';
  }
  SharedText(const SharedText& other) noexcept : _owners(other._owners) {
    if (_owners) {
      _owners->fetch_add(1, std::memory_order_relaxed);
    }
  }
  SharedText(SharedText&& other) noexcept : _owners(std::exchange(other._owners, nullptr)) {}
  SharedText& operator=(SharedText other) noexcept {
    std::swap(_owners, other._owners);
    return *this;
  }
  ~SharedText() {
    if (_owners && _owners->fetch_sub(1, std::memory_order_acq_rel) == 1) {
      ::operator delete(_owners);
    }
  }

  explicit operator bool() const { return _owners != nullptr; }

  /// The characters and a zero; null for a null text. Lives as long as this text or a copy.
  const char* c_str() const {
    return _owners ? reinterpret_cast<const char*>(_owners + 1) : nullptr;
  }
  std::string_view view() const { return _owners ? std::string_view(c_str()) : std::string_view(); }

 private:
  /// How many texts share the allocation; the characters follow it.
  using Owners = std::atomic<std::uint32_t>;

  Owners* _owners = nullptr;
};

}  // namespace quennel
