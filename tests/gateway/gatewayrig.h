#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <SQLiteCpp/Database.h>

#include "host/mobilesrv.h"
#include "terminal/gateway.h"
#include "tests/support/faketime.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// The loop of the sockets with clocks and timers that the test moves. The sockets' own timers are real.
class MovableLoop : public terminal::AsioLoop {
 public:
  explicit MovableLoop(FakeTime& time) : time_(time) {}

  std::unique_ptr<terminal::Timer> after(std::chrono::milliseconds delay, Work work) override {
    return time_.after(delay, std::move(work));
  }
  terminal::WallTime wallTime() const override { return time_.wallTime(); }
  terminal::BootTime bootTime() const override { return time_.bootTime(); }

  // Runs `work` on the loop's thread and waits for it.
  void run(const Work& work);

 private:
  FakeTime& time_;
};

// A request as the library gets it.
struct AgentCall {
  int64_t id = 0;
  int32_t terminalType = 0;
  std::string topic;
  std::string data;
  terminal::BootTime time{};
};

// The library's place: takes requests and answers when the test says so.
class ScriptedAgent : public IMobileSrvSpi {
 public:
  explicit ScriptedAgent(const FakeTime& time) : time_(time) {}

  void onRequest(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data) override;

  // The oldest call that was not taken. Nothing if none comes in time.
  std::optional<AgentCall> take(std::chrono::milliseconds limit = std::chrono::seconds(60));

 private:
  const FakeTime& time_;
  std::mutex mutex_;
  std::condition_variable came_;
  std::deque<AgentCall> calls_;
};

// The gateway in this process, with real sockets, files and threads, a scripted agent, and clocks that the test moves.
class GatewayRig {
 public:
  // A long run reads from a client only now and then, so none is taken for silent.
  explicit GatewayRig(terminal::NetLimits limits = {.idle = std::chrono::hours(1)}) : limits_(limits) { start(); }
  ~GatewayRig() { stop(); }
  GatewayRig(const GatewayRig&) = delete;
  GatewayRig& operator=(const GatewayRig&) = delete;

  uint16_t port() const { return port_; }
  const std::filesystem::path& dataDir() const { return dir_.path(); }
  const FakeTime& time() const { return time_; }
  ScriptedAgent& agent() { return *agent_; }

  // Makes a token, also one without rights, and opens the gateway's database, as another process would.
  std::string addToken(const std::string& name, int rights) const;
  SQLite::Database openDatabase() const;

  // Waits until what was read from the sockets is on the disk, and dispatched.
  void settle();

  // Timers run when they are due; or, as after a sleep of the machine, all that is due at the end.
  void advance(std::chrono::seconds time);
  void sleep(std::chrono::seconds time);

  void attachAgent();
  void detachAgent();

  // A reply, or a push if it has no request's id.
  void deliver(const MobileMessage& message) { gateway_->mobileService().send(message); }

  // Stops the gateway while requests are open, and starts it again on the same files and another port.
  void start();
  void stop();

 private:
  TempDir dir_;
  FakeTime time_;
  terminal::NetLimits limits_;
  std::shared_ptr<ScriptedAgent> agent_ = std::make_shared<ScriptedAgent>(time_);
  int32_t handle_ = 0;
  std::unique_ptr<MovableLoop> loop_;
  std::unique_ptr<terminal::Gateway> gateway_;
  uint16_t port_ = 0;
};

}  // namespace orvane::test
