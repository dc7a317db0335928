#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "terminal/relay/credentials.h"
#include "terminal/relay/message.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/subjects.h"
#include "terminal/relay/window.h"
#include "tests/support/tempdir.h"

namespace orvane::test {
namespace {

using namespace terminal::relay;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::Optional;
using testing::ThrowsMessage;
using Text = terminal::Session::Text;

Text text(size_t size) { return std::make_shared<const std::string>(size, 'x'); }

TEST(RelayMessage, KeepsEachField) {
  const Message sent{Kind::Close,        false,   0xFEDCBA98, 0x8000000000000001, 0x0123456789ABCDEF,
                     0xFFFFFFFFFFFFFFFF, "reason"};
  const std::string bytes = encode(sent);
  EXPECT_EQ(bytes.size(), kHeadBytes + 6);
  EXPECT_THAT(decode(bytes), Optional(FieldsAre(sent.kind, sent.isLast, sent.value, sent.channel, sent.number,
                                                sent.session, sent.payload)));
}

TEST(RelayMessage, RefusesWhatIsNone) {
  const std::string good = encode({.kind = Kind::Data});
  const auto with = [&](size_t at, char value) {
    std::string bytes = good;
    bytes[at] = value;
    return bytes;
  };
  EXPECT_TRUE(decode(good));
  for (size_t size = 0; size < good.size(); ++size) EXPECT_FALSE(decode(good.substr(0, size))) << size;
  for (const std::string& bytes : {with(0, 0), with(0, 2), with(1, 0), with(1, static_cast<char>(Kind::kEnd)),
                                   with(1, '\xFF'), with(2, 1), with(3, 2)}) {
    EXPECT_FALSE(decode(bytes));
  }
}

TEST(RelayMessage, RefusesWrongCastsAndOrigins) {
  const std::vector<uint64_t> sessions{7, 8};
  const std::string cast = writeCast(sessions, "hi");
  EXPECT_EQ(readCast(cast)->sessions, sessions);
  EXPECT_EQ(readCast(cast)->text, "hi");
  for (size_t size = 0; size < cast.size() - 2; ++size) EXPECT_FALSE(readCast(cast.substr(0, size))) << size;
  EXPECT_FALSE(readCast("\xFF\xFF\xFF\xFF"));

  EXPECT_EQ(readOrigin(writeOrigin({"2001:db8::1", "2001:db8::/64"}))->network, "2001:db8::/64");
  for (const std::string& wrong :
       {std::string(), std::string(" "), std::string("1.2.3.4"), std::string("1.2.3.4 "), std::string("1.2.3.4 x\ny"),
        std::string("1.2.3.4 5 6"), std::string(65, '1') + " 1"}) {
    EXPECT_FALSE(readOrigin(wrong)) << wrong;
  }
}

TEST(RelaySubjects, NameTheSender) {
  const Party desk{"desk7", "e1"};
  const Party relay{"r1", "e2"};
  EXPECT_EQ(senderOf(upSubject(desk, relay)), relay);
  EXPECT_EQ(senderOf(downSubject(relay, desk)), desk);
  EXPECT_EQ(senderOf(presenceSubject("desk7")), (Party{"desk7", ""}));
  for (const char* wrong : {"", "pocket", "pocket.here", "pocket.here.a.b", "pocket.up.a.b.c", "pocket.up.a.b.c.",
                            "other.up.a.b.c.d", "pocket.in.a.b.c.d", "pocket.up.a.b.c d.e", "pocket.up.a.b.c.d.e"}) {
    EXPECT_FALSE(senderOf(wrong)) << wrong;
  }
  EXPECT_FALSE(isName("desk.7"));
  EXPECT_FALSE(isName("*"));
  EXPECT_FALSE(isName(std::string(33, 'a')));
}

TEST(RelayWindow, CutsFramesAndWaitsForCredit) {
  SendWindow out;
  out.add(text(0));
  out.add(text(kWindowBytes + 10));
  out.add(text(5));
  EXPECT_TRUE(out.next()->isLast);  // an empty frame needs no credit
  size_t sent = 0;
  while (const auto piece = out.next()) {
    EXPECT_LE(piece->bytes.size(), kMaxPieceBytes);
    EXPECT_FALSE(piece->isLast);
    sent += piece->bytes.size();
  }
  EXPECT_EQ(sent, kWindowBytes);
  EXPECT_EQ(out.waitingBytes(), 5U);
  EXPECT_EQ(out.queuedBytes(), 15U);
  EXPECT_FALSE(out.takeWhole(1));
  out.grant(0xFFFFFFFF);
  EXPECT_EQ(out.next()->bytes.size(), 10U);
  EXPECT_EQ(out.next()->bytes.size(), 5U);
  EXPECT_TRUE(out.isEmpty());
  EXPECT_TRUE(out.takeWhole(kMaxPieceBytes));
  EXPECT_FALSE(out.takeWhole(kMaxPieceBytes + 1));
  EXPECT_FALSE(ReceiveWindow().take(kWindowBytes + 1));
}

TEST(RelayCredentials, AreReadBackAndNotMistaken) {
  const TempDir dir;
  const auto file = dir.path() / "desk7.credentials";
  const auto expectFault = [&](const std::string& fault) {
    EXPECT_THAT([&] { readCredentials(file); }, ThrowsMessage<std::runtime_error>(HasSubstr(fault)));
  };
  expectFault("No such file");
  const Credentials made{"desk7", NKey::make(), "https://relay.example", "-----BEGIN CERTIFICATE-----\nabc\n", {}};
  const std::string good = writeCredentials(made);
  std::ofstream(file) << good;
  chmod(file.c_str(), 0604);
  expectFault("chmod 600");
  chmod(file.c_str(), 0600);
  const Credentials read = readCredentials(file);
  EXPECT_EQ(read.name, "desk7");
  EXPECT_EQ(read.key.publicText(), made.key.publicText());
  EXPECT_EQ(read.page, made.page);
  EXPECT_EQ(read.authority, made.authority);
  std::string damaged = good;
  char& letter = damaged[damaged.find("seed: ") + 20];
  letter = letter == 'A' ? 'B' : 'A';
  const std::vector<std::pair<std::string, std::string>> rows{{"seed: x\n", "\"name:\" must be"},
                                                              {"name: desk7\nseed: x\n", "\"page:\" must be"},
                                                              {damaged, "the seed is damaged"}};
  for (const auto& [content, fault] : rows) {
    std::ofstream(file) << content;
    expectFault(fault);
  }
}

TEST(RelayUrls, AreCheckedBeforeTheyAreUsed) {
  for (const char* good :
       {"nats://127.0.0.1:4222", "nats://localhost:1", "nats://[::1]:4222", "tls://one.example:4222"}) {
    EXPECT_EQ(checkUrl(good), "") << good;
  }
  EXPECT_THAT(checkUrl("nats://one.example:4222"), HasSubstr("with TLS only: tls://one.example:4222"));
  EXPECT_THAT(checkUrl("nats://127.0.0.1.example:4222"), HasSubstr("with TLS only"));
  for (const char* wrong : {"", "one:4222", "tls://", "tls://:4222", "tls://one", "tls://one:", "tls://one:x",
                            "tls://u@one:4222", "http://one:4222", "tls://one:4222/x"}) {
    EXPECT_THAT(checkUrl(wrong), HasSubstr("is not an address such as")) << wrong;
  }
}

}  // namespace
}  // namespace orvane::test
