#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

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

std::vector<std::string> plains() {
  return {documentText(500), documentText(300'000), std::string(200'000, 'x'),
          documentText(100'000) + randomBytes(70'000) + documentText(100'000)};
}

TEST(CompressionTools, ReadOursAndWeReadTheirs) {
  for (const std::string& plain : plains()) {
    EXPECT_EQ(filtered("gzip -dc", gzipped_tq(bytesOf(plain))->view()), plain);
    for (const char* command : {"gzip -nc1", "gzip -nc9"}) {
      EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(filtered(command, plain)))), plain);
    }
    EXPECT_EQ(filtered("xz -dc", payloadOf(plain, lzma)), plain);
    for (const char* command : {"xz -c0 --check=none", "xz -c9 --check=crc64",
                                "xz -c --check=sha256 --block-size=65536"}) {
      EXPECT_EQ(textOf(unpacked(lzma, filtered(command, plain), plain.size())), plain) << command;
    }
    EXPECT_EQ(unpacked(lzma, filtered("xz -c --format=lzma", plain), plain.size()), nullptr);
  }
}

// A raw block is what the tool's old format puts behind its magic word and the block's size.
TEST(CompressionTools, Lz4ReadsOurRawBlocksAndWeReadItsOwn) {
  const std::string magic = fromHex("02214c18");
  for (const std::string& plain : plains()) {
    const std::string block = payloadOf(plain, lz4Raw);
    EXPECT_EQ(filtered("lz4 -dc", magic + littleEndian(block.size(), 4) + block), plain);
    const std::string file = filtered("lz4 -lc", plain);
    ASSERT_EQ(file.substr(0, 4), magic);
    EXPECT_EQ(textOf(unpacked(lz4Raw, std::string_view(file).substr(8), plain.size())), plain);
  }
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

TEST(CompressionTools, Lz4ReadsOurLinkedBlocks) {
  for (const std::string& plain : plains()) {
    EXPECT_EQ(filtered("lz4 -dc", frameOf(payloadOf(plain, lz4))), plain);
  }
}

}  // namespace
}  // namespace tq
