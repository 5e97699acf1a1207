-- The shop's database, the same for SQLite and PostgreSQL.
CREATE TABLE customer (
  code     TEXT PRIMARY KEY,
  name     TEXT NOT NULL,
  discount NUMERIC(5,2) NOT NULL,
  terms    INTEGER
);
INSERT INTO customer VALUES ('C-1001', 'Zoë Müller & Sons', 2.5, 30);
INSERT INTO customer VALUES ('C-1002', 'O''Brien Ltd', 0, NULL);
INSERT INTO customer VALUES ('D''Arcy', 'D''Arcy Bros', 12.75, 14);

-- A row for each order that was converted.
CREATE TABLE audit (
  order_no   INTEGER NOT NULL,
  customer   TEXT NOT NULL,
  items      INTEGER NOT NULL,
  total      NUMERIC(12,2) NOT NULL,
  written_at TIMESTAMP DEFAULT CURRENT_TIMESTAMP
);
