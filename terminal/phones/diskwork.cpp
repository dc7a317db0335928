#include "terminal/phones/diskwork.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <SQLiteCpp/Transaction.h>
#include <sqlite3.h>

#include "terminal/gatewaydatabase.h"
#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

constexpr std::chrono::seconds kPatience{3};
constexpr std::chrono::milliseconds kHurriedPatience{300};
constexpr std::chrono::milliseconds kReportedPatience{500};  // a lock of a moment is nothing to report
constexpr std::chrono::milliseconds kLockPause{10};
constexpr std::chrono::milliseconds kIdlePause{100};
constexpr std::chrono::milliseconds kFaultPause{500};

bool isLocked(const SQLite::Exception& error) {
  return error.getErrorCode() == SQLITE_BUSY || error.getErrorCode() == SQLITE_LOCKED;
}

}  // namespace

void DiskWork::add(DiskItem item) {
  item.since = clock_.bootTime();
  const std::scoped_lock lock(mutex_);
  new_.push_back(std::move(item));
  added_.notify_one();
}

void DiskWork::wait(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  added_.wait_for(lock, limit, [this] { return !new_.empty(); });
}

void DiskWork::turn(const std::function<void()>& beforeWriting) {
  takeNew();
  runReads();
  beforeWriting();
  runWrites();
}

void DiskWork::takeNew() {
  std::deque<DiskItem> items;
  {
    const std::scoped_lock lock(mutex_);
    items.swap(new_);
  }
  for (DiskItem& item : items) {
    if (item.prepare) item.prepare();
    (item.kind == DiskItem::Kind::Read ? reads_ : writes_).push_back(std::move(item));
  }
}

bool DiskWork::isOld(const DiskItem& item) const {
  return ageOf(item) >= (isHurried_ ? BootTime(kHurriedPatience) : BootTime(kPatience));
}

std::chrono::milliseconds DiskWork::pause() const {
  if (!reads_.empty() || (!writes_.empty() && (isLocked_ || isHurried_))) return kLockPause;
  return writes_.empty() ? kIdlePause : kFaultPause;
}

void DiskWork::runReads() {
  std::deque<DiskItem> locked;
  for (DiskItem& item : reads_) {
    try {
      item.run();
      item.done({});
    } catch (const SQLite::Exception& error) {
      if (isLocked(error) && !isOld(item)) {
        locked.push_back(std::move(item));
      } else {
        item.done(describeFault(file_, error));
      }
    }
  }
  reads_ = std::move(locked);
}

void DiskWork::runWrites() {
  if (writes_.empty()) return;
  try {
    writeAll();
  } catch (const SQLite::Exception& error) {
    isLocked_ = isLocked(error);
    return fail(describeFault(file_, error));
  } catch (const std::runtime_error& error) {
    isLocked_ = false;
    return fail(error.what());
  }
  if (!fault_.empty()) TERMINAL_LOG(gatewayLogger(), Info, "gateway.db can be written again");
  fault_.clear();
  for (const DiskItem& item : writes_) item.done({});
  writes_.clear();
}

void DiskWork::writeAll() {
  open_();
  const bool isDurable = std::any_of(writes_.begin(), writes_.end(),
                                     [](const DiskItem& item) { return item.kind == DiskItem::Kind::Durable; });
  db_.exec(isDurable ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
  SQLite::Transaction transaction(db_, SQLite::TransactionBehavior::IMMEDIATE);
  for (const DiskItem& item : writes_) item.run();
  transaction.commit();
}

void DiskWork::fail(const std::string& fault) {
  std::deque<DiskItem> kept;
  bool isReported = !isLocked_;
  for (DiskItem& item : writes_) {
    const bool waits = isLocked_ && !isOld(item);
    isReported = isReported || ageOf(item) >= kReportedPatience;
    if (waits || item.isPatient) {
      kept.push_back(std::move(item));
    } else {
      item.done(fault);
    }
  }
  if (isReported && fault_ != fault) {
    TERMINAL_LOG(gatewayLogger(), Error, "{}", fault);
    fault_ = fault;
  }
  writes_ = std::move(kept);
}

}  // namespace orvane::terminal
