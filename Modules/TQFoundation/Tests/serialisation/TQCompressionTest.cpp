#include <TQFoundation/serialisation/TQCompression.h>

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "support/Bytes.h"
#include "support/Errors.h"
#include "support/TemporaryDirectory.h"

namespace {

using enum TQCompressionAlgorithm;

constexpr std::pair<const char*, TQCompressionAlgorithm> kAlgorithms[] = {
    {"LZ4", lz4}, {"LZ4 raw", lz4Raw}, {"deflate", deflate}, {"LZMA", lzma}, {"LZFSE", lzfse}};

/// Returns "null" for null.
std::string textOf(const Ref<Data>& data) {
  return data != nullptr ? std::string(data->view()) : "null";
}

std::string containerOf(std::string_view plain, TQCompressionAlgorithm algorithm) {
  return std::string(dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm)->view());
}

/// The stream in the container of `plain`.
std::string payloadOf(std::string_view plain, TQCompressionAlgorithm algorithm) {
  const std::string container = containerOf(plain, algorithm);
  return container.substr(10, container.size() - 18);
}

Ref<Data> unpacked(TQCompressionAlgorithm algorithm, std::string_view stream, std::uint64_t size) {
  return dataByDecompressingWithAlgorithm(bytesOf(stream), algorithm, 0, 0, size);
}

TEST(CompressionContainer, HasTheLayoutByteForByte) {
  const std::string zeros(5000, '\0');
  const Rows<const char*, TQCompressionAlgorithm, std::string, const char*, std::string> cases{
      {"nothing", deflate, "", "00000000 00000000 0003", fromHex("00000000 00000000")},
      {"unknown algorithm", TQCompressionAlgorithm{99}, "abc", "00000000 00000000 0003",
       "abc" + fromHex("c2412435 03000000")},
      {"deflate", deflate, zeros, "1f8b0800 00000000 0003", littleEndian(5000, 4)},
      {"few bytes", deflate, std::string(30, 'a'), "1f8b0800 00000000 0003", littleEndian(30, 4)},
      {"LZ4", lz4, zeros, "00010000 00000000 0003 62763431", littleEndian(5000, 4)},
      {"LZ4 raw", lz4Raw, zeros, "01010000 00000000 0003", littleEndian(5000, 4)},
      {"LZMA", lzma, zeros, "06030000 00000000 0003 fd377a58", littleEndian(5000, 4)},
      {"LZFSE", lzfse, zeros, "01080000 00000000 0003 62767832", littleEndian(5000, 4)},
  };
  for (const auto& [name, algorithm, plain, head, tail] : cases) {
    SCOPED_TRACE(name);
    const std::string container = containerOf(plain, algorithm);
    EXPECT_THAT(container, testing::StartsWith(fromHex(head)));
    EXPECT_THAT(container, testing::EndsWith(tail));
    EXPECT_LE(container.size(), plain.size() + 18);
  }
}

TEST(CompressionContainer, AcceptsAStreamAsLongAsThePlainBytes) {
  // Between random bytes, which are stored, and repetition, which shrinks.
  const std::string noise = randomBytes(40);
  for (const auto& [algorithm, mark] : {std::pair(lz4Raw, '\1'), std::pair(deflate, '\x1f')}) {
    bool found = false;
    for (std::size_t repeated = 4; repeated < 40 && !found; ++repeated) {
      const std::string plain = noise + noise.substr(0, repeated) + "last bytes!!";
      const std::string container = containerOf(plain, algorithm);
      found = container.size() == plain.size() + 18 && container[0] == mark;
      EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(container))), plain);
    }
    EXPECT_TRUE(found) << mark;
  }
}

TEST(CompressionContainer, IsReadWrittenByHand) {
  const std::string head = fromHex("00000000 00000000 0003");
  const std::string lz4Head = fromHex("00010000 00000000 0003");
  const std::string lzfseStream = fromHex("6276782d 03000000") + "abc" + fromHex("62767824");
  const Rows<const char*, std::string, std::string> cases{
      {"stored, whatever its length says", head + "abc" + fromHex("00000000 ffffffff"), "abc"},
      {"the eight bytes may say anything else",
       fromHex("00000000 12345678 9abc") + "abc" + std::string(8, '\0'), "abc"},
      {"bytes behind the stream", lz4Head + "bv4$more" + std::string(8, '\0'), ""},
      {"LZFSE", fromHex("01080000 00000000 0003") + lzfseStream + fromHex("00000000 03000000"),
       "abc"},
      {"LZFSE, the older layout", fromHex("01080000 03000000 00000000") + lzfseStream, "abc"},
      {"the older layout of another length", fromHex("01080000 02000000 00000000") + lzfseStream,
       "null"},
      {"the older layout has no other algorithm",
       fromHex("00010000 00000000 00000000") + "bv4$" + fromHex("0000"), "null"},
      {"unknown algorithm", fromHex("02010000 00000000 0003") + std::string(8, '\0'), "null"},
      {"shortest", std::string(18, '\0'), ""},
  };
  for (const auto& [name, container, plain] : cases) {
    EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(container))), plain) << name;
  }
}

TEST(CompressionContainer, HeaderAndFooterMustFit) {
  constexpr std::size_t kHuge = ~std::size_t{0};
  const auto bytes = bytesOf("0123456789");
  EXPECT_EQ(textOf(dataByDecompressingWithAlgorithm(bytes, stored, 4, 3, 77)), "456");
  EXPECT_EQ(textOf(dataByDecompressingWithAlgorithm(bytes, stored, 6, 4, 0)), "");
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, 6, 5, 0), nullptr);
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, kHuge, 12, 0), nullptr);
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, 2, kHuge, 0), nullptr);
}

TEST(Gzip, IsRecognisedByItsStartAndFailsWhereNothingIsSaved) {
  EXPECT_TRUE(isGzipped_tq(bytesOf("\x1f\x8b" + std::string(16, 'x'))));
  EXPECT_FALSE(isGzipped_tq(bytesOf("\x1f\x8b" + std::string(15, 'x'))));
  EXPECT_TRUE(isGzipped_tq(*gzipped_tq(bytesOf(documentText(2000)))));
  for (const std::string& plain : {std::string(), randomBytes(1000)}) {
    EXPECT_THROW((void)gzipped_tq(bytesOf(plain)), gzip_tqError);
    Ref<Error> error;
    EXPECT_EQ(gzipped_tqAndReturnError(bytesOf(plain), &error), nullptr);
    expectError(error, gzip_tqErrorDomain, gzip_tqErrorCannotCompress);
  }
}

/// Returns the output of a system tool for `input`, or "null" if the tool failed.
std::string filtered(const std::string& command, std::string_view input) {
  const TemporaryDirectory directory;
  const std::string in = directory.write("in", input), out = directory.path("out");
  const int status = std::system((command + " <'" + in + "' >'" + out + "' 2>/dev/null").c_str());
  return status == 0 ? directory.read("out") : "null";
}

// The tool's frames contain the same linked blocks of 64 KiB with other headers: a size whose top
// bit is set for stored bytes, and 0 at the end.
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

TEST(CompressionTools, ReadOurContainersAsWeDoAndWeReadTheirs) {
  const std::string document = documentText(300'000);
  // The tool's old format is a magic word, the size of a raw block, and the block.
  const std::string magic = fromHex("02214c18");
  for (const std::string& plain :
       {document.substr(0, 65537),  // an LZ4 block and one byte
        std::string(1'000'000, 'x'), document + randomBytes(90'000) + document,
        document.substr(0, 3000) + randomBytes(259'000) + document.substr(0, 3000)}) {
    for (const auto& [name, algorithm] : kAlgorithms) {
      const std::string container = containerOf(plain, algorithm);
      EXPECT_LE(container.size(), plain.size() + 18) << name;
      EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(container))), plain) << name;
    }
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

/// Returns the peak memory of the process.
std::size_t peakBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

// With lengths below and above the one from which LZFSE has its own blocks. Streams have no
// checksums, so flipped bits may go undetected; the length never differs.
TEST(CompressionDamage, GivesNullOrTheLength) {
  for (const std::string& plain : {documentText(700), documentText(5000)}) {
    for (const auto& [name, algorithm] : kAlgorithms) {
      SCOPED_TRACE(name);
      std::string container = containerOf(plain, algorithm);
      const std::string_view stream = std::string_view(container).substr(10, container.size() - 18);
      for (const std::uint64_t length :
           {std::uint64_t{0}, plain.size() - 1, plain.size() + 1, std::uint64_t{0xffffffff}}) {
        ASSERT_EQ(unpacked(algorithm, stream, length), nullptr) << length;
      }
      for (std::size_t length = 0; length < stream.size(); ++length) {
        ASSERT_EQ(unpacked(algorithm, stream.substr(0, length), plain.size()), nullptr) << length;
      }
      for (std::size_t bit = 32; bit < 8 * container.size(); bit += 3) {
        const auto mask = static_cast<char>(1 << bit % 8);
        container[bit / 8] ^= mask;
        const Ref<Data> read = dataByDecompressing_tq(bytesOf(container));
        container[bit / 8] ^= mask;
        ASSERT_TRUE(read == nullptr || read->length() == plain.size());
      }
    }
  }
}

TEST(CompressionDamage, FalseLengthsTouchNoMemory) {
  const std::size_t before = peakBytes();
  for (const auto& [name, algorithm] : kAlgorithms) {
    SCOPED_TRACE(name);
    EXPECT_EQ(unpacked(algorithm, randomBytes(100'000), 0xffffffff), nullptr);
    EXPECT_EQ(unpacked(algorithm, randomBytes(1000), ~std::uint64_t{0}), nullptr);
  }
  const std::string older = fromHex("01080000 ffffffff ffffffff 62767824 0000");
  EXPECT_EQ(dataByDecompressing_tq(bytesOf(older)), nullptr);
  // Headers inside the streams may be false as well.
  const std::string lying[] = {
      "bvxn" + littleEndian(0xffffffff, 4) + littleEndian(8, 4) + fromHex("0600000000000000"),
      "bvx-" + littleEndian(0xffffffff, 4) + "bvx$",
      "bvx2" + littleEndian(0xffffffff, 4) + std::string(24, '\0'),
      "bvx1" + std::string(4, '\xff') + std::string(800, '\xff')};
  for (const std::string& stream : lying) {
    EXPECT_EQ(unpacked(TQCompressionAlgorithm::lzfse, stream, 100'000), nullptr);
  }
  const std::string block = "bv41" + littleEndian(0xffffffff, 4) + littleEndian(4, 4) + "bv4$";
  EXPECT_EQ(unpacked(TQCompressionAlgorithm::lz4, block, 1000), nullptr);
  EXPECT_LT(peakBytes() - before, std::size_t{200} << 20) << "xz may take 128 MiB for its state";
}

TEST(CompressionDamage, MoreBytesThanTheHostAcceptsAreAnError) {
  const std::string plain(1 << 20, 'x');
  std::vector<std::string> containers = {containerOf(plain, stored)};
  for (const auto& [name, algorithm] : kAlgorithms) {
    containers.push_back(containerOf(plain, algorithm));
  }
  containers.push_back(fromHex("01080000") + littleEndian(plain.size(), 8) +
                       payloadOf(plain, lzfse));
  for (const std::string& container : containers) {
    Ref<Error> error = Error::errorWithDomain("old", 1);
    EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(container), {.decompressedBytes = plain.size()},
                                            &error)),
              plain);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(
        dataByDecompressing_tq(bytesOf(container), {.decompressedBytes = plain.size() - 1}, &error),
        nullptr);
    expectLimit(error, ReadingLimit::decompressedBytes);
    // Damage is no error, except that of the length at the end or, in the older layout, at 4 to 11.
    for (std::size_t i = 12; i < container.size() - 4; i += container.size() / 500 + 1) {
      std::string flipped = container;
      flipped[i] ^= '\x55';
      for (const std::string& damaged : {flipped, container.substr(0, i)}) {
        (void)dataByDecompressing_tq(bytesOf(damaged), {.decompressedBytes = plain.size()}, &error);
        ASSERT_EQ(error, nullptr) << "byte " << i << " of " << container.size();
      }
    }
  }
  // The end of the older layout's stream, "bvx$", would be a length within reach.
  const std::string older = fromHex("01080000 03000000 00000000") + std::string(400'000, 'x');
  Ref<Error> error;
  EXPECT_EQ(dataByDecompressing_tq(bytesOf(older + "bvx$"), {.decompressedBytes = 3}, &error),
            nullptr);
  EXPECT_EQ(error, nullptr);
}

#ifndef TQ_SANITIZED  // sanitizers reserve more than the limit, and fill sparse pages
TEST(CompressionFault, WithoutMemoryTheResultIsNull) {
  // The child process can only use what is free in its heap.
  const auto run = [] {
    const std::string plain(std::size_t{64} << 20, 'x');
    const std::string container = containerOf(plain, TQCompressionAlgorithm::lz4);
    rlimit limit{};
    limit.rlim_cur = limit.rlim_max = std::size_t{1} << 20;
    setrlimit(RLIMIT_AS, &limit);
    for (const auto& [name, algorithm] : kAlgorithms) {
      if (dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm) != nullptr) _exit(1);
    }
    Ref<Error> error;
    if (gzipped_tqAndReturnError(bytesOf(plain), &error) != nullptr || error == nullptr) _exit(2);
    _exit(dataByDecompressing_tq(bytesOf(container)) == nullptr ? 0 : 3);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(CompressionStress, BeyondFourGiBTheContainerKeepsTheLowHalfOfTheLength) {
  constexpr std::size_t kSize = (std::size_t{1} << 32) + 1234;
  // Pages that are never written share one page of zeros.
  void* const zeros =
      ::mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  const Ref<Data> container = dataByCompressingWithAlgorithm_tq(
      {static_cast<const std::byte*>(zeros), kSize}, TQCompressionAlgorithm::lz4);
  ::munmap(zeros, kSize);
  ASSERT_NE(container, nullptr);
  EXPECT_LT(container->length(), kSize / 200);
  EXPECT_EQ(container->view().substr(0, 10), test::fromHex("00010000 00000000 0003"));
  EXPECT_EQ(container->view().substr(container->length() - 8, 4), test::fromHex("d7fa6ace"))
      << "the sum of all bytes";
  EXPECT_EQ(container->view().substr(container->length() - 4), test::littleEndian(1234, 4));
  EXPECT_EQ(dataByDecompressing_tq(*container), nullptr) << "1234 is not the length";
}
#endif

}  // namespace
