-- A database of version 1, as release 0.1.0 leaves it: its tables with one account, one instrument and two orders.
PRAGMA foreign_keys=OFF;
BEGIN TRANSACTION;
CREATE TABLE trading_day (
  day INTEGER NOT NULL
) STRICT;
INSERT INTO trading_day VALUES(20778);
CREATE TABLE exchange (
  id        INTEGER PRIMARY KEY,
  name      TEXT NOT NULL UNIQUE,
  full_name TEXT NOT NULL
) STRICT;
INSERT INTO exchange VALUES(1,'SHFE','上海期货交易所');
CREATE TABLE code_type (
  name                TEXT PRIMARY KEY,
  default_margin_rate REAL NOT NULL CHECK (default_margin_rate > 0)
) STRICT;
INSERT INTO code_type VALUES('黑色系',0.11999999999999999555);
CREATE TABLE instrument (
  hash_code      INTEGER PRIMARY KEY CHECK (hash_code BETWEEN -9007199254740991 AND 9007199254740991),
  code_class     INTEGER NOT NULL CHECK (code_class BETWEEN 0 AND 3),
  exchange       INTEGER NOT NULL REFERENCES exchange,
  code           TEXT NOT NULL,
  name           TEXT NOT NULL,
  code_type      TEXT NOT NULL REFERENCES code_type,
  multiplier     INTEGER NOT NULL CHECK (multiplier > 0),
  price_tick     REAL NOT NULL CHECK (price_tick > 0),
  lot            INTEGER NOT NULL CHECK (lot > 0),
  max_volume     INTEGER NOT NULL CHECK (max_volume >= lot),
  pre_close      REAL NOT NULL,
  pre_settlement REAL NOT NULL,
  lower_limit    REAL NOT NULL CHECK (lower_limit > 0),
  upper_limit    REAL NOT NULL CHECK (upper_limit > lower_limit),
  UNIQUE (exchange, code)
) STRICT;
INSERT INTO instrument VALUES(1000001,1,1,'rb2701','螺纹钢2701','黑色系',10,1.0,1,500,3312.0,3308.0,3077.0,3539.0);
CREATE TABLE quote (
  hash_code INTEGER PRIMARY KEY REFERENCES instrument,
  last      REAL NOT NULL CHECK (last > 0)
) STRICT;
INSERT INTO quote VALUES(1000001,3325.0);
CREATE TABLE account (
  idx             INTEGER PRIMARY KEY,
  user_code       TEXT NOT NULL,
  market_type     INTEGER NOT NULL CHECK (market_type IN (1, 2, 8, 16)),
  aim_type        INTEGER NOT NULL,
  online          INTEGER NOT NULL CHECK (online IN (0, 1)),
  trigger_orders  INTEGER NOT NULL CHECK (trigger_orders IN (0, 1)),
  ordinary_orders INTEGER NOT NULL CHECK (ordinary_orders IN (0, 1)),
  pre_balance     REAL NOT NULL,
  deposit         REAL NOT NULL,
  withdraw        REAL NOT NULL,
  commission      REAL NOT NULL
) STRICT;
INSERT INTO account VALUES(1,'80010001',1,1,1,1,1,2000000.0,50000.0,0.0,84.573499999999995676);
CREATE TABLE refused_function (
  function TEXT NOT NULL,
  account  INTEGER REFERENCES account,
  reason   TEXT NOT NULL
) STRICT;
CREATE TABLE margin_rate (
  account         INTEGER NOT NULL REFERENCES account,
  hash_code       INTEGER NOT NULL REFERENCES instrument,
  long_by_money   REAL NOT NULL,
  long_by_volume  REAL NOT NULL,
  short_by_money  REAL NOT NULL,
  short_by_volume REAL NOT NULL,
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;
INSERT INTO margin_rate VALUES(1,1000001,0.13000000000000000444,0.0,0.13000000000000000444,0.0);
CREATE TABLE commission_rate (
  account   INTEGER NOT NULL REFERENCES account,
  code_type TEXT NOT NULL REFERENCES code_type,
  by_money  REAL NOT NULL,
  by_volume REAL NOT NULL,
  minimum   REAL NOT NULL,
  sale_tax  REAL NOT NULL,
  PRIMARY KEY (account, code_type)
) STRICT, WITHOUT ROWID;
INSERT INTO commission_rate VALUES(1,'黑色系',0.00010000000000000000479,0.0,0.0,0.0);
CREATE TABLE holding (
  account          INTEGER NOT NULL REFERENCES account,
  hash_code        INTEGER NOT NULL REFERENCES instrument,
  direction        INTEGER NOT NULL CHECK (direction IN (1, 2)),
  yesterday_volume INTEGER NOT NULL CHECK (yesterday_volume >= 0),
  yesterday_closed INTEGER NOT NULL CHECK (yesterday_closed BETWEEN 0 AND yesterday_volume),
  today_volume     INTEGER NOT NULL CHECK (today_volume >= 0),
  yesterday_price  REAL NOT NULL,
  today_price      REAL NOT NULL,
  close_profit     REAL NOT NULL,
  PRIMARY KEY (account, hash_code, direction)
) STRICT, WITHOUT ROWID;
INSERT INTO holding VALUES(1,1000001,1,10,2,4,3285.0,3318.0,280.0);
INSERT INTO holding VALUES(1,1000001,2,3,0,0,3340.0,0.0,0.0);
CREATE TABLE orders (
  id              INTEGER PRIMARY KEY,
  account         INTEGER NOT NULL REFERENCES account,
  hash_code       INTEGER NOT NULL REFERENCES instrument,
  source_flags    INTEGER NOT NULL,
  source_text     TEXT NOT NULL,
  exchange_id     TEXT NOT NULL,
  created         INTEGER NOT NULL,
  side            INTEGER NOT NULL,
  comb_offset     INTEGER NOT NULL,
  hedge           INTEGER NOT NULL,
  price_type      INTEGER NOT NULL,
  price           REAL NOT NULL,
  volume          INTEGER NOT NULL,
  close_yesterday INTEGER NOT NULL,
  close_today     INTEGER NOT NULL,
  status          INTEGER NOT NULL CHECK (status BETWEEN 1 AND 4),
  note            TEXT NOT NULL,
  fill_volume     INTEGER NOT NULL,
  fill_amount     REAL NOT NULL,
  fill_avg_price  REAL NOT NULL,
  day             INTEGER NOT NULL DEFAULT (unixepoch('now', 'localtime') / 86400)
) STRICT;
INSERT INTO orders VALUES(1001,1,1000001,65536,'手机','SHFE00001001',1795298157000,1,1,1,1,3318.0,4,0,0,2,'',4,132720.0,3318.0,20778);
INSERT INTO orders VALUES(1007,1,1000001,65536,'手机','SHFE00001007',1795299497000,2,4,1,1,3360.0,2,2,0,1,'',0,0.0,0.0,20778);
CREATE TABLE fill (
  id         INTEGER PRIMARY KEY,
  order_id   INTEGER NOT NULL REFERENCES orders,
  fill_id    TEXT NOT NULL,
  time       INTEGER NOT NULL,
  volume     INTEGER NOT NULL CHECK (volume > 0),
  price      REAL NOT NULL,
  commission REAL NOT NULL
) STRICT;
INSERT INTO fill VALUES(1,1001,'SHFE00000001',1795298157000,4,3318.0,13.272000000000000241);
CREATE TABLE credit_terms (
  account           INTEGER PRIMARY KEY REFERENCES account,
  long_margin_rate  REAL NOT NULL,
  short_margin_rate REAL NOT NULL,
  keep_margin_ratio REAL NOT NULL,
  collateral_rate   REAL NOT NULL,
  interest_rate     REAL NOT NULL,
  long_limit        REAL NOT NULL,
  short_limit       REAL NOT NULL
) STRICT;
CREATE TABLE credit_contract (
  id        INTEGER PRIMARY KEY,
  account   INTEGER NOT NULL REFERENCES credit_terms,
  hash_code INTEGER NOT NULL REFERENCES instrument,
  direction INTEGER NOT NULL CHECK (direction IN (1, 2)),
  volume    INTEGER NOT NULL CHECK (volume >= 0),
  amount    REAL NOT NULL,
  interest  REAL NOT NULL
) STRICT;
CREATE TABLE strategy_target (
  account      INTEGER NOT NULL REFERENCES account,
  hash_code    INTEGER NOT NULL REFERENCES instrument,
  family       INTEGER NOT NULL CHECK (family BETWEEN 1 AND 3),
  strategy     TEXT NOT NULL,
  long_volume  INTEGER NOT NULL,
  short_volume INTEGER NOT NULL,
  PRIMARY KEY (account, hash_code, family, strategy)
) STRICT, WITHOUT ROWID;
INSERT INTO strategy_target VALUES(1,1000001,1,'趋势一号',8,3);
INSERT INTO strategy_target VALUES(1,1000001,1,'趋势二号',4,0);
CREATE TABLE manual_position (
  account      INTEGER NOT NULL REFERENCES account,
  hash_code    INTEGER NOT NULL REFERENCES instrument,
  long_volume  INTEGER NOT NULL CHECK (long_volume >= 0),
  short_volume INTEGER NOT NULL CHECK (short_volume >= 0),
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;
CREATE TABLE sync_rule (
  account   INTEGER NOT NULL REFERENCES account,
  hash_code INTEGER NOT NULL REFERENCES instrument,
  rule      INTEGER NOT NULL CHECK (rule BETWEEN 0 AND 3),
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;
COMMIT;
PRAGMA user_version = 1;
