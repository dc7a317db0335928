#include "terminal/trading/storeerror.h"

#include <SQLiteCpp/Exception.h>
#include <fmt/format.h>
#include <sqlite3.h>

#include "terminal/databasecopy.h"

namespace orvane::terminal {
namespace {

struct Remedy {
  const char* english;
  const char* chinese;
};

Remedy remedyOf(int code) {
  switch (code) {
    case SQLITE_FULL:
      return {"free some space on its disk", "请释放磁盘空间"};
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
      return {"make the file and its folder writable", "请使该文件及其目录可写"};
    case SQLITE_IOERR:
      return {"check the disk", "请检查磁盘"};
    case SQLITE_BUSY:
      return {"stop the program that uses it", "请停止正在使用它的程序"};
    default:
      return {"move the file away, or name another folder with --data", "请移走该文件, 或用 --data 指定其他目录"};
  }
}

int codeOf(const std::exception& cause) {
  const auto* exception = dynamic_cast<const SQLite::Exception*>(&cause);
  return exception == nullptr ? SQLITE_ERROR : exception->getErrorCode() & 0xFF;
}

}  // namespace

StoreError::StoreError(const std::filesystem::path& file, const std::exception& cause, bool mayBeStored)
    : std::runtime_error(fmt::format("cannot use the database {}: {}; {}", file.string(), cause.what(),
                                     remedyOf(codeOf(cause)).english)),
      file_(file.string()),
      reason_(cause.what()),
      code_(codeOf(cause)),
      // A write that found no room never completed the frame that commits.
      mayBeStored_(mayBeStored && code_ != SQLITE_FULL) {}

bool StoreError::isOfDisk() const { return isDiskFault(code_); }

std::string StoreError::refusal() const {
  return fmt::format("数据库 {} 无法写入 ({}), 未作任何更改: {}", file_, reason_, remedyOf(code_).chinese);
}

std::string StoreError::lostHistory() const {
  return fmt::format("数据库 {} 写入失败 ({}), 权益历史暂停记录: {}", file_, reason_, remedyOf(code_).chinese);
}

std::string StoreError::unreadable() const {
  return fmt::format("数据库 {} 读取失败 ({}): {}", file_, reason_, remedyOf(code_).chinese);
}

std::string StoreError::unknownOutcome() const {
  return fmt::format("数据库 {} 写入失败 ({}), 结果未知: 请勿重新提交, 待恢复后查看列表", file_, reason_);
}

}  // namespace orvane::terminal
