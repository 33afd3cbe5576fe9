#pragma once

#include <fstream>
#include <iterator>

#include "support/Test.h"

namespace tq::test {

inline std::span<const std::byte> bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text));
}

inline std::string fromHex(std::string_view digits) {
  std::string bytes;
  std::string pair;
  for (const char digit : digits) {
    if (digit != ' ') pair += digit;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

inline std::string repeated(std::string_view text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

inline std::string littleEndian(std::uint64_t value, std::size_t count) {
  std::string bytes;
  for (; count > 0; --count, value >>= 8) bytes += static_cast<char>(value & 0xff);
  return bytes;
}

inline std::string randomBytes(std::size_t count) {
  std::mt19937 random(1);  // the same in every run
  std::string bytes(count, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

/// Returns text that resembles the archive of a drawing.
inline std::string documentText(std::size_t count) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < count) {
    text += R"({"_class":"Shape","name":"Oval )" + std::to_string(random() % 1000) +
            R"(","frame":"{{)" + std::to_string(random() % 5000) + ".5, " +
            std::to_string(random()) + R"(}, {100, 64}}","hidden":false},)";
  }
  text.resize(count);
  return text;
}

inline std::string fileContents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tq::test
