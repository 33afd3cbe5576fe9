#pragma once

/// @file Describe.h
/// Descriptions of containers, with a limit of their depth and length.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

/// Collects the description of a container. Nested containers count against the same limits: those
/// of the outermost container that is being described on this thread. Content beyond them is
/// replaced by "…".
class ContainerDescription {
 public:
  explicit ContainerDescription(std::string_view open) : text_(open) {
    if (depth_++ == 0) room_ = kLongest;
  }
  ~ContainerDescription() { --depth_; }
  ContainerDescription(const ContainerDescription&) = delete;
  ContainerDescription& operator=(const ContainerDescription&) = delete;

  /// Returns true if no more elements can be added.
  [[nodiscard]] static bool isFull() noexcept { return room_ == 0 || depth_ > kDeepest; }

  void add(std::string_view text) {
    if (text.size() > room_) {
      text = text.substr(0, room_);
      const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) >> 6) == 2; };
      while (!text.empty() && isContinuation(text.back())) text.remove_suffix(1);
      if (!text.empty()) text.remove_suffix(1);  // perhaps the first byte of what was cut
      room_ = text.size();
    }
    text_ += text;
    room_ -= text.size();
  }

  void add(const Object& element) {
    const std::size_t room = room_;
    const std::string text = element.description();
    room_ = room;  // the text includes what nested containers have added
    add(text);
  }

  [[nodiscard]] std::string finish(std::string_view close) {
    if (isFull()) text_ += "…";
    text_ += close;
    return std::move(text_);
  }

 private:
  static constexpr int kDeepest = 32;
  static constexpr std::size_t kLongest = std::size_t{1} << 20;

  inline static thread_local constinit int depth_ = 0;
  inline static thread_local constinit std::size_t room_ = 0;

  std::string text_;
};

}  // namespace tq::detail
