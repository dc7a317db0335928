-- What the sample accounts earned so far: a row for each day of the last year, and one for each minute of today. The
-- walks are random but the same in every folder, and end at the figures of the other samples. cost: today's commission.
CREATE TEMP TABLE term (account, equity REAL, available REAL, margin REAL, profit REAL, start REAL, cost REAL, gain);
INSERT INTO term VALUES
  (1, 2058035.4265, 1191031.9265, 817848.5, 8120, 2000000, 84.5735, 0.11),
  (2, 1484852.315,   591020.115,  837018,   4918, 1500000, 65.685, -0.04),
  (3,  602257,       521267,       80990,   2265,  600000, 8,       0.19),
  (4, 1003038.84,    421601.14,   369640,   3062, 1000000, 23.16,   0.07);

-- Paid in (positive) or out, so many days ago.
CREATE TEMP TABLE flow (account, days_ago, amount);
INSERT INTO flow VALUES
  (1, 0, 50000), (1, 84, -80000), (1, 212, 200000), (2, 0, -20000), (2, 301, 100000), (4, 150, 60000);

-- Times in seconds since 1970.
CREATE TEMP TABLE today AS
WITH clock AS (SELECT unixepoch('now') AS now, unixepoch('now', 'localtime') - unixepoch('now') AS ahead),
     start AS (SELECT day, day * 86400 - 60 * CAST(round(ahead / 60.0) AS INTEGER) AS midnight, now
               FROM clock, trading_day)
SELECT day, midnight, max((now - midnight) / 60, 1) AS minutes FROM start;

-- From 0 to 0, in a step for each day and each minute.
CREATE TEMP TABLE walk (account, span, n, length, value REAL);
INSERT INTO walk
WITH RECURSIVE step (account, span, n, length, seed, sum) AS (
  SELECT account, 'year', 0, 364, account * 48271, 0.0 FROM term
  UNION ALL
  SELECT account, 'day', 0, minutes, account * 69621, 0.0 FROM term, today
  UNION ALL
  SELECT account, span, n + 1, length, seed * 1103515245 + 12345 & 2147483647,
    sum + (seed / 65536 % 2001 - 1000) / 1000.0 FROM step WHERE n < length)
SELECT account, span, n, length,
  sum - n * first_value(sum) OVER (PARTITION BY account, span ORDER BY n DESC) / length
FROM step;

INSERT INTO equity
WITH past AS (
  SELECT account, n - 365 AS days, start * (1 - gain * (length - n) / length + 0.009 * value)
    - (SELECT total(amount) FROM flow f WHERE f.account = term.account AND days_ago BETWEEN 1 AND length - n) AS equity,
    (SELECT total(amount) FROM flow f WHERE f.account = term.account AND days_ago = 365 - n) AS paid,
    margin / equity AS share
  FROM walk JOIN term USING (account) WHERE span = 'year')
SELECT account, (midnight + (days + 1) * 86400 - 60) * 1000, day + days, equity, equity * (1 - share), equity * share,
  coalesce(equity - lag(equity) OVER (PARTITION BY account ORDER BY days) - paid, 0), max(paid, 0), max(-paid, 0)
FROM past, today;

-- A payment comes after two fifths of the minutes, the commission after a tenth.
INSERT INTO equity
WITH present AS (
  SELECT account, n, start - (10 * n >= length) * cost AS rest, profit * n / length + 0.0004 * start * value AS profit,
    (5 * n >= 2 * length) * (SELECT total(amount) FROM flow f WHERE f.account = term.account AND days_ago = 0) AS paid,
    margin, available - equity AS free
  FROM walk JOIN term USING (account) WHERE span = 'day')
SELECT account, (midnight + 60 * n) * 1000, day, rest + profit + paid, rest + profit + paid + free, margin, profit,
  max(paid, 0), max(-paid, 0)
FROM present, today;

DROP TABLE term;
DROP TABLE flow;
DROP TABLE today;
DROP TABLE walk;
