#include <gtest/gtest.h>
#include <zlib.h>

#include "platform/ivByteReader.h"
#include "platform/ivFileStream.h"
#include "platform/ivMemStream.h"
#include "platform/ivSubStream.h"
#include "platform/ivZlibUnCompress.h"
#include "support/TestSupport.h"

namespace {

std::string ReadN(ivStream& s, std::uint32_t n, ivStatus* st = nullptr) {
    std::string out(n, '\0');
    std::uint32_t got = 0;
    ivStatus r = s.Read(out.data(), n, &got);
    if (st) *st = r;
    out.resize(got);
    return out;
}

TEST(ivSubStream, WindowSemantics) {
    auto base = MemStream("0123456789");
    ivSubStream sub(base, 2, 5);  // "23456"
    EXPECT_EQ(sub.Size(), 5u);
    EXPECT_EQ(ReadN(sub, 3), "234");
    EXPECT_EQ(ReadN(sub, 10), "56");  // clipped to the window
    ivStatus st = kOk;
    EXPECT_EQ(ReadN(sub, 1, &st), "");
    EXPECT_EQ(st, kRemark);  // nothing left: success, nothing read
    EXPECT_EQ(sub.Seek(-100, ivSeekOrigin::Current), 0);
    EXPECT_EQ(sub.Seek(100, ivSeekOrigin::Begin), 5);
    EXPECT_EQ(sub.Seek(1, ivSeekOrigin::End), 1);  // deliberately measured from the start
    EXPECT_EQ(ReadN(sub, 1), "3");
    std::uint32_t written = 7;
    EXPECT_EQ(sub.Write("x", 1, &written), kWrongType);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(sub.SetSize(1), kWrongType);

    ivSubStream rest(base, 7, 0xFFFFFFFFu);  // to the end of the base
    EXPECT_EQ(rest.Size(), 3u);
    ivSubStream beyond(base, 20, 0xFFFFFFFFu);
    EXPECT_EQ(beyond.Size(), 0u);
}

TEST(ivFileStream, ReadOnlyAndErrors) {
    std::string error;
    EXPECT_EQ(ivFileStream::Open("/nonexistent/file.pdf", &error), nullptr);
    EXPECT_FALSE(error.empty());
    auto f = ivFileStream::Open(TestDataPath("../CMakeLists.txt"));
    ASSERT_NE(f, nullptr);
    EXPECT_GT(f->Size(), 0u);
    EXPECT_EQ(f->Write("x", 1, nullptr), kWrongType);
    EXPECT_EQ(f->SetSize(0), kWrongType);
    f->Seek(static_cast<std::int64_t>(f->Size()), ivSeekOrigin::Begin);
    ivStatus st = kOk;
    EXPECT_EQ(ReadN(*f, 4, &st), "");
    EXPECT_EQ(st, kRemark);
}

TEST(ivZlibUnCompress, InflatesLazilyAndKeepsWhatCameBeforeAnError) {
    std::string plain(100000, 'a');
    for (std::size_t i = 0; i < plain.size(); i += 7) plain[i] = static_cast<char>('a' + i % 26);
    uLongf size = compressBound(plain.size());
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
             plain.size());
    packed.resize(size);

    std::string out;
    EXPECT_EQ(ivReadAll(*ivZlibUnCompress::Create(MemStream(packed)), out), kOk);
    EXPECT_EQ(out, plain);

    out.clear();  // cut short: what came is kept, no error
    EXPECT_EQ(ivReadAll(*ivZlibUnCompress::Create(MemStream(packed.substr(0, packed.size() / 2))), out), kOk);
    EXPECT_EQ(out, plain.substr(0, out.size()));
    EXPECT_GT(out.size(), 0u);

    out.clear();  // no zlib header: an error with its reason
    auto bad = ivZlibUnCompress::Create(MemStream("this is not zlib data"));
    EXPECT_EQ(ivReadAll(*bad, out), kFail);
    EXPECT_FALSE(bad->ErrorText().empty());
}

TEST(ivByteReader, ReadsAcrossRefills) {
    std::string data(10000, 'x');
    data[9999] = 'y';
    auto s = MemStream(data);
    ivByteReader r(*s);
    std::uint8_t buf[5000];
    EXPECT_EQ(r.Read(buf, 5000), 5000u);
    EXPECT_EQ(r.Read(buf, 5000), 5000u);
    EXPECT_EQ(buf[4999], 'y');
    std::uint8_t b = 0;
    EXPECT_FALSE(r.ReadByte(b));
}

}  // namespace
