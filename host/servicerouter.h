#pragma once

namespace orvane {

class ICodeService;
class IMobileSrv;
class ITradeService;

// The services that every part of the terminal shares.
class IBaseService {
 public:
  virtual ~IBaseService() = default;

  // Never null while the base service is up.
  virtual ICodeService* getCodeService() = 0;

  // Null while the mobile service is not up. The agent tests it in its own operations, not when a task sends.
  virtual IMobileSrv* getMobileSrv() = 0;
};

// The root of the host's services. Callers walk from here at each use and keep no pointer between calls.
class IServiceRouter {
 public:
  // Never null. Any thread.
  static IServiceRouter* instance();

  virtual ~IServiceRouter() = default;

  // Null while the base service is not up.
  virtual IBaseService* getBaseService() = 0;

  // Never null while requests run.
  virtual ITradeService* getTradeService() = 0;
};

}  // namespace orvane
