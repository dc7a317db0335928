#include "bench/barenats.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <nats/nats.h>

#include "bench/figure.h"
#include "bench/timing.h"
#include "terminal/relay/credentials.h"

namespace orvane::bench {
namespace {

// Those for which the credentials have permissions.
constexpr const char* kClient = "r2";
constexpr const char* kResponder = "t4";
constexpr const char* kRequests = "pocket.up.t4.bare.r2.bare";
constexpr const char* kReplies = "pocket.down.r2.bare.t4.bare";

constexpr size_t kSamples = 1000;

void require(natsStatus status) {
  if (status != NATS_OK) throw std::runtime_error(std::string("NATS: ") + natsStatus_GetText(status));
}

void answer(natsConnection* connection, natsSubscription* /*subscription*/, natsMsg* message, void* reply) {
  const auto& bytes = *static_cast<const std::string*>(reply);
  natsConnection_Publish(connection, natsMsg_GetReply(message), bytes.data(), static_cast<int>(bytes.size()));
  natsMsg_Destroy(message);
}

}  // namespace

struct BareNats::End {
  End(const test::Cluster& cluster, const char* name, size_t server) {
    const terminal::relay::Credentials credentials = terminal::relay::readCredentials(cluster.credentials(name));
    const std::filesystem::path seed = cluster.dir() / (credentials.name + ".seed");
    std::ofstream(seed) << credentials.key.seed();
    natsOptions* options = nullptr;
    require(natsOptions_Create(&options));
    const std::unique_ptr<natsOptions, decltype(&natsOptions_Destroy)> owner(options, natsOptions_Destroy);
    require(natsOptions_SetURL(options, cluster.urlList().at(server).c_str()));
    require(natsOptions_SetNKeyFromSeed(options, credentials.key.publicText().c_str(), seed.c_str()));
    require(natsOptions_SetSendAsap(options, true));
    require(natsConnection_Connect(&connection, options));
  }
  ~End() {
    natsSubscription_Destroy(subscription);
    natsConnection_Close(connection);
    natsConnection_Destroy(connection);
  }
  End(const End&) = delete;
  End& operator=(const End&) = delete;

  natsConnection* connection = nullptr;
  natsSubscription* subscription = nullptr;
};

BareNats::BareNats(const test::Cluster& cluster, std::string request, std::string reply)
    : request_(std::move(request)),
      reply_(std::move(reply)),
      responder_(std::make_unique<End>(cluster, kResponder, 0)),
      client_(std::make_unique<End>(cluster, kClient, 1)) {
  // The callback only reads the reply.
  require(natsConnection_Subscribe(&responder_->subscription, responder_->connection, kRequests, answer,
                                   const_cast<std::string*>(&reply_)));
  require(natsConnection_SubscribeSync(&client_->subscription, client_->connection, kReplies));
  require(natsConnection_Flush(responder_->connection));
  require(natsConnection_Flush(client_->connection));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // until the other servers know the subscriptions
}

BareNats::~BareNats() = default;

double BareNats::measure() {
  constexpr int64_t kPatience = 5000;
  std::vector<double> samples;
  while (samples.size() < kSamples) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    const double begin = wallTime();
    natsMsg* message = nullptr;
    require(natsConnection_PublishRequestString(client_->connection, kRequests, kReplies, request_.c_str()));
    require(natsSubscription_NextMsg(&message, client_->subscription, kPatience));
    samples.push_back(wallTime() - begin);
    const std::string_view got(natsMsg_GetData(message), static_cast<size_t>(natsMsg_GetDataLength(message)));
    const bool isRight = got == reply_;
    natsMsg_Destroy(message);
    if (!isRight) throw std::runtime_error("NATS brought another reply");
  }
  return quantile(samples, 0.5);
}

}  // namespace orvane::bench
