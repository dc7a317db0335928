#pragma once

namespace orvane {

class ICodeService;
class IMobileSrv;
class ITradeService;

// The host's base service.
class IBaseService {
 public:
  virtual ~IBaseService() = default;

  // Never null while requests run.
  virtual ICodeService* getCodeService() = 0;

  // Null while the mobile service is down, which must not be the case while requests run: the agent's operations test
  // for null, a task that sends does not.
  virtual IMobileSrv* getMobileSrv() = 0;
};

// The root of the host's services. The library looks each service up at every use and keeps no pointer.
class IServiceRouter {
 public:
  // Never null. Any thread.
  static IServiceRouter* instance();

  virtual ~IServiceRouter() = default;

  // Null while the base service is down. Tested as above.
  virtual IBaseService* getBaseService() = 0;

  // Never null while requests run.
  virtual ITradeService* getTradeService() = 0;
};

}  // namespace orvane
