#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "serialisation/CompressionSupport.h"

namespace tq {
namespace {

using namespace test;
using enum TQCompressionAlgorithm;

/// What the system's own tool makes of `input`; none tells that it refused.
std::string filtered(const std::string& command, std::string_view input) {
  const std::string path = testing::TempDir() + "filter" + std::to_string(::getpid());
  std::ofstream(path + ".in", std::ios::binary) << input;
  const int status =
      std::system((command + " <'" + path + ".in' >'" + path + ".out' 2>/dev/null").c_str());
  std::string output = status == 0 ? fileContents(path + ".out") : "none";
  std::filesystem::remove(path + ".in");
  std::filesystem::remove(path + ".out");
  return output;
}

// The tool's frames hold the same linked blocks of 64 KiB behind other words: a size whose top bit
// says that the bytes are stored, and 0 for the end.
std::string frameOf(std::string_view stream) {
  std::string frame = fromHex("04224d18 4040c0");
  while (!stream.starts_with("bv4$")) {
    const bool isStored = stream.starts_with("bv4-");
    const std::size_t head = isStored ? 8 : 12;
    std::uint32_t size = 0;
    for (std::size_t i = head; i-- > head - 4;) size = size << 8 | std::uint8_t(stream[i]);
    frame += littleEndian(size | (isStored ? 0x80000000 : 0), 4);
    frame += stream.substr(head, size);
    stream.remove_prefix(head + size);
  }
  return frame + littleEndian(0, 4);
}

TEST(CompressionTools, ReadOursAndWeReadTheirs) {
  const std::string document = documentText(300'000);
  // A raw block is what the tool's old format puts behind its magic word and the block's size.
  const std::string magic = fromHex("02214c18");
  for (const std::string& plain : {document.substr(0, 500), std::string(200'000, 'x'),
                                   document + randomBytes(70'000) + document}) {
    const std::string block = payloadOf(plain, lz4Raw);
    const std::pair<const char*, std::string> ours[] = {
        {"gzip -dc", std::string(gzipped_tq(bytesOf(plain))->view())},
        {"xz -dc", payloadOf(plain, lzma)},
        {"lz4 -dc", magic + littleEndian(block.size(), 4) + block},
        {"lz4 -dc", frameOf(payloadOf(plain, lz4))},
    };
    for (const auto& [command, file] : ours) EXPECT_EQ(filtered(command, file), plain) << command;

    EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(filtered("gzip -nc9", plain)))), plain);
    for (const char* command : {"xz -c0 --check=none", "xz -c9 --check=crc64",
                                "xz -c --check=sha256 --block-size=65536"}) {
      EXPECT_EQ(textOf(unpacked(lzma, filtered(command, plain), plain.size())), plain) << command;
    }
    EXPECT_EQ(unpacked(lzma, filtered("xz -c --format=lzma", plain), plain.size()), nullptr);
    const std::string raw = filtered("lz4 -lc", plain).substr(8);
    EXPECT_EQ(textOf(unpacked(lz4Raw, raw, plain.size())), plain);
  }
}

}  // namespace
}  // namespace tq
