-- Primary facts only; all other figures are computed from them. Texts are UTF-8, times milliseconds since 1970, amounts
-- in the account's currency, rates plain factors, flags 0 or 1.

-- The current trading day, in days since 1970, local time.
CREATE TABLE trading_day (
  day INTEGER NOT NULL
) STRICT;
INSERT INTO trading_day (day) VALUES (unixepoch('now', 'localtime') / 86400);

CREATE TABLE exchange (
  id        INTEGER PRIMARY KEY,
  name      TEXT NOT NULL UNIQUE,
  full_name TEXT NOT NULL
) STRICT;

CREATE TABLE code_type (
  name                TEXT PRIMARY KEY,
  default_margin_rate REAL NOT NULL CHECK (default_margin_rate > 0)
) STRICT;

-- Hash codes are limited to the integers that a JavaScript number holds exactly. code_class: 0 stock, 1 future,
-- 2 option, 3 fund.
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

-- The last price. An instrument without a row is at its pre-settlement price.
CREATE TABLE quote (
  hash_code INTEGER PRIMARY KEY REFERENCES instrument,
  last      REAL NOT NULL CHECK (last > 0)
) STRICT;

-- market_type: 1 futures, 2 stocks, 8 options, 16 credit. deposit, withdraw and commission are today's.
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

-- A function (its topic) that is refused to the user, or only on one account if account is not null.
CREATE TABLE refused_function (
  function TEXT NOT NULL,
  account  INTEGER REFERENCES account,
  reason   TEXT NOT NULL
) STRICT;

-- An instrument without a row has its code type's default rate on both sides.
CREATE TABLE margin_rate (
  account         INTEGER NOT NULL REFERENCES account,
  hash_code       INTEGER NOT NULL REFERENCES instrument,
  long_by_money   REAL NOT NULL,
  long_by_volume  REAL NOT NULL,
  short_by_money  REAL NOT NULL,
  short_by_volume REAL NOT NULL,
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;

-- A code type without a row is free of commission. minimum is per fill, sale_tax a share of the value of a sale.
CREATE TABLE commission_rate (
  account   INTEGER NOT NULL REFERENCES account,
  code_type TEXT NOT NULL REFERENCES code_type,
  by_money  REAL NOT NULL,
  by_volume REAL NOT NULL,
  minimum   REAL NOT NULL,
  sale_tax  REAL NOT NULL,
  PRIMARY KEY (account, code_type)
) STRICT, WITHOUT ROWID;

-- direction: 1 long, 2 short. yesterday_volume is the volume at the start of the day, yesterday_closed the part of it
-- closed today.
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

-- day: the trading day; lists show the current day's orders. status: 1 working, 2 filled, 3 cancelled, 4 refused.
-- price_type: 1 limit, 2 market.
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

CREATE TABLE fill (
  id         INTEGER PRIMARY KEY,
  order_id   INTEGER NOT NULL REFERENCES orders,
  fill_id    TEXT NOT NULL,
  time       INTEGER NOT NULL,
  volume     INTEGER NOT NULL CHECK (volume > 0),
  price      REAL NOT NULL,
  commission REAL NOT NULL
) STRICT;

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

-- direction: 1 money borrowed to buy, 2 securities borrowed to sell.
CREATE TABLE credit_contract (
  id        INTEGER PRIMARY KEY,
  account   INTEGER NOT NULL REFERENCES credit_terms,
  hash_code INTEGER NOT NULL REFERENCES instrument,
  direction INTEGER NOT NULL CHECK (direction IN (1, 2)),
  volume    INTEGER NOT NULL CHECK (volume >= 0),
  amount    REAL NOT NULL,
  interest  REAL NOT NULL
) STRICT;

-- family: 1 active strategies, 2 strategies not sent yet, 3 algorithms.
CREATE TABLE strategy_target (
  account      INTEGER NOT NULL REFERENCES account,
  hash_code    INTEGER NOT NULL REFERENCES instrument,
  family       INTEGER NOT NULL CHECK (family BETWEEN 1 AND 3),
  strategy     TEXT NOT NULL,
  long_volume  INTEGER NOT NULL,
  short_volume INTEGER NOT NULL,
  PRIMARY KEY (account, hash_code, family, strategy)
) STRICT, WITHOUT ROWID;

CREATE TABLE manual_position (
  account      INTEGER NOT NULL REFERENCES account,
  hash_code    INTEGER NOT NULL REFERENCES instrument,
  long_volume  INTEGER NOT NULL CHECK (long_volume >= 0),
  short_volume INTEGER NOT NULL CHECK (short_volume >= 0),
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;

-- rule: 0 long and short are synchronised separately (also without a row), 1 and 3 the net difference with closing
-- first, 2 the net difference in one order.
CREATE TABLE sync_rule (
  account   INTEGER NOT NULL REFERENCES account,
  hash_code INTEGER NOT NULL REFERENCES instrument,
  rule      INTEGER NOT NULL CHECK (rule BETWEEN 0 AND 3),
  PRIMARY KEY (account, hash_code)
) STRICT, WITHOUT ROWID;
