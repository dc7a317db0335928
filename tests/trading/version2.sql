-- What a database of version 2 holds besides version1.sql.
CREATE INDEX orders_by_day ON orders (day);
CREATE INDEX fill_by_order ON fill (order_id);
CREATE TABLE overwritten (count INTEGER NOT NULL) STRICT;
INSERT INTO overwritten VALUES(3);
PRAGMA user_version = 2;
