CREATE TABLE customers (
    "CustomerId" INTEGER PRIMARY KEY,
    "Name" VARCHAR(40) NOT NULL,
    "City" VARCHAR(30),
    "Email" VARCHAR(60),
    "Balance" NUMERIC(12,2) NOT NULL DEFAULT 0,
    "Active" BOOLEAN NOT NULL DEFAULT 1,
    "UpdatedBy" VARCHAR(20),
    "UpdatedAt" TIMESTAMP
);
INSERT INTO customers ("CustomerId", "Name", "City", "Email", "Balance", "Active") VALUES (1, 'Ada Lovelace', 'London', 'ada@example.com', 1250.50, 1);
INSERT INTO customers ("CustomerId", "Name", "City", "Email", "Balance", "Active") VALUES (2, 'Charles Babbage', 'London', NULL, -310.00, 1);
INSERT INTO customers ("CustomerId", "Name", "City", "Email", "Balance", "Active") VALUES (3, 'Grace Hopper', 'New York', 'grace@example.com', 0, 1);
INSERT INTO customers ("CustomerId", "Name", "City", "Email", "Balance", "Active") VALUES (4, 'Alan Turing', 'Manchester', NULL, 78.25, 0);
INSERT INTO customers ("CustomerId", "Name", "City", "Email", "Balance", "Active") VALUES (5, 'Katherine Johnson', 'Hampton', 'katherine@example.com', 4400.00, 1);
