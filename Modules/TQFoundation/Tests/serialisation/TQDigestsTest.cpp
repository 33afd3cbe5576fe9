#include <TQFoundation/serialisation/TQDigests.h>

#include <TQFoundation/serialisation/TQFNV1aBuilder.h>

#include "support/Bytes.h"
#include "support/CapturedLog.h"

namespace {

// FIPS 180's examples.
TEST(SHA1, OfKnownTextsAndUnderOlderNamesThatWarn) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {std::string(1'000'000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
  };
  for (const auto& [plain, digest] : cases) {
    const CapturedLog log;
    const Ref<Data> data = Data::dataWithBytes(plain);
    EXPECT_EQ(sha1String_tq(*data)->view(), digest);
    EXPECT_EQ(sha1Data_tq(*data)->view(), fromHex(digest));
    EXPECT_TRUE(log.messages().empty());
    EXPECT_EQ(sha1(*data)->view(), fromHex(digest));
    EXPECT_EQ(sha1AsString(*data)->view(), digest);
    EXPECT_THAT(
        log.messages(),
        testing::ElementsAre("[com.korvan.serialisation:digests] error: WARNING: `-[NSData sha1]` "
                             "from a private Korvan category might be removed in the "
                             "future. We now use `-[NSData sha1Data_tq]` ourselves (no warranty!).",
                             testing::HasSubstr("sha1AsString]")));
  }
}

std::string checksumOf(std::string_view bytes) {
  TQFNV1aBuilder builder;
  builder.addData(bytesOf(bytes));
  return std::string(builder.checksum()->view());
}

TEST(FNV1a, OfKnownTextsBuiltUpPieceByPiece) {
  std::string allBytes;
  for (int i = 0; i < 4 * 256; ++i) allBytes += static_cast<char>(i);
  EXPECT_EQ(checksumOf(""), "6C62272E07BB014262B821756295C58D");
  EXPECT_EQ(checksumOf("foobar"), "343E1662793C64BF6F0D3597BA446F18");
  EXPECT_EQ(checksumOf(allBytes), "A14176B4FA8BE677563F36DA8584718D")
      << "by whole-number arithmetic";
  TQFNV1aBuilder builder;
  builder.addData(static_cast<const Data*>(nullptr));
  builder.addString(static_cast<const String*>(nullptr));
  builder.addString(*String::stringWithUTF16(u"\xd800"));  // has no bytes
  builder.addString(String::of("Grüße").get());
  const TQFNV1aBuilder before = builder;
  builder.addData(Data::dataWithBytes(" und so weiter").get());
  EXPECT_EQ(builder.checksum()->view(), checksumOf("Grüße und so weiter"));
  EXPECT_EQ(before.checksum()->view(), checksumOf("Grüße"));
}

}  // namespace
