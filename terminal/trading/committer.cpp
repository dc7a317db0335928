#include "terminal/trading/committer.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kRetry{100};

}  // namespace

Committer::Committer(std::filesystem::path dir, OpenedBook opened, Hooks hooks)
    : dir_(std::move(dir)),
      database_(std::move(opened.database)),
      copy_(std::move(opened.copy)),
      hooks_(std::move(hooks)),
      error_(std::move(opened.error)) {
  thread_ = std::thread([this] { run(); });
}

Committer::~Committer() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void Committer::requireOpen() const {
  const std::lock_guard lock(mutex_);
  if (error_) throw StoreError(*error_);
}

std::string Committer::fault() const {
  const std::lock_guard lock(mutex_);
  return error_ ? error_->what() : timer_.fault(dir_ / "terminal.db");
}

void Committer::add(const Book& book, const Change& change, std::vector<MobileMessage> pushes) {
  {
    const std::lock_guard lock(mutex_);
    const std::thread::id caller = std::this_thread::get_id();
    if (error_) {  // the commit failed while the change was made: the book is about to be restored without it
      if (isWriting_) {
        current_.changers.insert(caller);
      } else {
        failures_[caller] = error_->refusal();
      }
      return;
    }
    next_.rows.add(book, change);
    for (MobileMessage& push : pushes) next_.pushes.push_back(std::move(push));
    next_.changers.insert(caller);
  }
  changed_.notify_one();
}

void Committer::notify(MobileMessage message) {
  const std::lock_guard lock(mutex_);
  if (!isWriting_ && next_.empty()) return hooks_.push(std::move(message));
  (next_.empty() ? current_ : next_).notices.push_back(std::move(message));
}

void Committer::whenStored(Answer answer) {
  std::string failure;
  {
    const std::lock_guard lock(mutex_);
    const std::thread::id caller = std::this_thread::get_id();
    if (auto failed = failures_.extract(caller)) {
      failure = std::move(failed.mapped());
    } else if (isWriting_ || !next_.empty()) {
      current_.changers.erase(caller);
      next_.changers.erase(caller);
      (next_.empty() ? current_ : next_).answers.push_back(std::move(answer));
      return;
    }
  }
  answer(failure);
}

void Committer::post(Job job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
  }
  changed_.notify_one();
}

void Committer::runJob(std::unique_lock<std::mutex>& lock) {
  if (jobs_.empty()) return;
  Job job = std::move(jobs_.front());
  jobs_.pop_front();
  lock.unlock();
  const bool goesOn = [&] {
    const WriteTimer::Write write(timer_);
    return job(database_ ? *database_ : copy_->database);
  }();
  lock.lock();
  if (goesOn) jobs_.push_front(std::move(job));
}

void Committer::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    runJob(lock);
    if (error_) {
      changed_.wait_for(lock, kRetry, [this] { return isStopping_ || !jobs_.empty(); });
      if (isStopping_) return;
      lock.unlock();
      if (recover()) {
        finish("", true);
        hooks_.notice("数据库已恢复写入: 此前结果未知的更改均未执行");
      }
      lock.lock();
      continue;
    }
    changed_.wait(lock, [this] { return isStopping_ || !next_.empty() || !jobs_.empty(); });
    if (next_.empty() && !jobs_.empty()) continue;
    if (next_.empty()) return;
    current_ = std::exchange(next_, {});
    isWriting_ = true;
    lock.unlock();
    commit();
    lock.lock();
  }
}

void Committer::commit() {
  const WriteTimer::Write write(timer_);
  try {
    if (!current_.rows.empty) database_->save(current_.rows);
  } catch (const StoreError& error) {
    {
      const std::lock_guard lock(mutex_);
      error_ = error;
      std::move(next_.notices.begin(), next_.notices.end(), std::back_inserter(current_.notices));
      std::move(next_.answers.begin(), next_.answers.end(), std::back_inserter(current_.answers));
      current_.changers.merge(next_.changers);
      next_ = {};
    }
    isRestored_ = false;
    const bool recovered = recover();
    if (!recovered) hooks_.notice(error.mayBeStored() ? error.unknownOutcome() : error.refusal());
    finish(error.mayBeStored() && !recovered ? error.unknownOutcome() : error.refusal(), recovered);
    return;
  }
  for (MobileMessage& push : current_.pushes) hooks_.push(std::move(push));
  finish("", true);
}

// Changes are taken again only when the failed ones have their answer: a later one may not share it.
void Committer::finish(const std::string& failure, bool isWritable) {
  Group group;
  {
    const std::lock_guard lock(mutex_);
    group = std::exchange(current_, {});
    for (MobileMessage& notice : group.notices) hooks_.push(std::move(notice));  // nothing may overtake them
    isWriting_ = false;
    if (isWritable) error_.reset();
    if (!failure.empty()) {
      for (const std::thread::id changer : group.changers) failures_[changer] = failure;
    }
  }
  for (const Answer& answer : group.answers) answer(failure);
}

// After a failed flush the frames of the commit may be in the write-ahead log, and a crash would bring them back. So
// nothing is certain until another commit has overwritten them.
bool Committer::recover() {
  try {
    if (database_ == nullptr) {
      database_ = std::make_unique<Database>(dir_);
      copy_.reset();
      isRestored_ = false;
    }
    if (!isRestored_) hooks_.restore(database_->load());
    isRestored_ = true;
    database_->overwriteFailed();
  } catch (const StoreError& error) {
    const std::lock_guard lock(mutex_);
    error_ = error;
    return false;
  }
  return true;
}

}  // namespace orvane::terminal
