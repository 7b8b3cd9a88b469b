CREATE TABLE countries (
    "Code" VARCHAR(2) PRIMARY KEY,
    "Name" VARCHAR(40) NOT NULL
);
INSERT INTO countries ("Code", "Name") VALUES ('AT', 'Austria');
INSERT INTO countries ("Code", "Name") VALUES ('AU', 'Australia');
INSERT INTO countries ("Code", "Name") VALUES ('BE', 'Belgium');
INSERT INTO countries ("Code", "Name") VALUES ('BR', 'Brazil');
INSERT INTO countries ("Code", "Name") VALUES ('CA', 'Canada');
INSERT INTO countries ("Code", "Name") VALUES ('CH', 'Switzerland');
INSERT INTO countries ("Code", "Name") VALUES ('CI', 'Côte d''Ivoire');
INSERT INTO countries ("Code", "Name") VALUES ('CZ', 'Czechia');
INSERT INTO countries ("Code", "Name") VALUES ('DE', 'Germany');
INSERT INTO countries ("Code", "Name") VALUES ('DK', 'Denmark');
INSERT INTO countries ("Code", "Name") VALUES ('ES', 'Spain');
INSERT INTO countries ("Code", "Name") VALUES ('FI', 'Finland');
INSERT INTO countries ("Code", "Name") VALUES ('FR', 'France');
INSERT INTO countries ("Code", "Name") VALUES ('GB', 'United Kingdom');
INSERT INTO countries ("Code", "Name") VALUES ('IE', 'Ireland');
INSERT INTO countries ("Code", "Name") VALUES ('IS', 'Iceland');
INSERT INTO countries ("Code", "Name") VALUES ('IT', 'Italy');
INSERT INTO countries ("Code", "Name") VALUES ('JP', 'Japan');
INSERT INTO countries ("Code", "Name") VALUES ('NL', 'Netherlands');
INSERT INTO countries ("Code", "Name") VALUES ('NO', 'Norway');
INSERT INTO countries ("Code", "Name") VALUES ('NZ', 'New Zealand');
INSERT INTO countries ("Code", "Name") VALUES ('PL', 'Poland');
INSERT INTO countries ("Code", "Name") VALUES ('PT', 'Portugal');
INSERT INTO countries ("Code", "Name") VALUES ('SE', 'Sweden');
INSERT INTO countries ("Code", "Name") VALUES ('TR', 'Türkiye');
INSERT INTO countries ("Code", "Name") VALUES ('US', 'United States');
ALTER TABLE customers ADD COLUMN "Country" VARCHAR(2);
UPDATE customers SET "Country" = 'GB' WHERE "CustomerId" IN (1, 2, 4);
UPDATE customers SET "Country" = 'US' WHERE "CustomerId" IN (3, 5);
