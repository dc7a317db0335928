-- Futures, stocks, options (not logged in) and credit. The commissions are the sums of the fills in orders.sql.
INSERT INTO account (idx, user_code, market_type, aim_type, online, trigger_orders, ordinary_orders, pre_balance,
                     deposit, withdraw, commission) VALUES
  (1, '80010001',  1, 1, 1, 1, 1, 2000000, 50000,     0, 84.5735),
  (2, 'A60012345', 2, 1, 1, 0, 1, 1500000,     0, 20000, 65.685),
  (3, '80080003',  8, 3, 0, 1, 1,  600000,     0,     0, 8),
  (4, 'E0450016', 16, 1, 1, 0, 1, 1000000,     0,     0, 23.16);

-- m2701, SR701 and T2703 have no row in account 1, which shows the default rates of their code types.
INSERT INTO margin_rate (account, hash_code, long_by_money, long_by_volume, short_by_money, short_by_volume) VALUES
  (1, 1000001, 0.13, 0, 0.13,  0),
  (1, 1000002, 0.14, 0, 0.14,  0),
  (1, 1000003, 0.11, 0, 0.11,  0),
  (1, 2000002, 0.15, 0, 0.15,  0),
  (1, 3000002, 0.09, 0, 0.095, 0),
  (1, 4000001, 0.12, 0, 0.12,  0),
  (3, 4100001, 1, 0, 0, 61000),
  (3, 5100001, 1, 0, 0, 4200),
  (3, 5100002, 1, 0, 0, 3800);

INSERT INTO commission_rate (account, code_type, by_money, by_volume, minimum, sale_tax) VALUES
  (1, '黑色系',   0.0001,   0,   0, 0),
  (1, '贵金属',   0,        10,  0, 0),
  (1, '有色金属', 0.00005,  0,   0, 0),
  (1, '农产品',   0,        1.5, 0, 0),
  (1, '化工',     0,        3,   0, 0),
  (1, '股指',     0.000023, 0,   0, 0),
  (1, '国债',     0,        3,   0, 0),
  (2, '股票',     0.00025,  0,   5, 0.0005),
  (2, '基金',     0.0001,   0, 0.5, 0),
  (3, '期权',     0,        1.6, 0, 0),
  (4, '股票',     0.0003,   0,   5, 0.0005),
  (4, '基金',     0.0001,   0, 0.5, 0);

INSERT INTO credit_terms (account, long_margin_rate, short_margin_rate, keep_margin_ratio, collateral_rate, interest_rate,
                          long_limit, short_limit) VALUES
  (4, 0.8, 1.0, 1.3, 0.7, 0.068, 1000000, 500000);
