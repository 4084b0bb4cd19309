-- Sample rows of the demo asset database (SQLite): 9 asset types, 50 network
-- nodes and 2,000 assets. The assets are generated, not random: every value
-- comes from a fixed hash of the row number, so each run gives the same rows.
-- scripts/demo runs this file with sqlite3 once the tables exist.

BEGIN;

-- Asset types. "Server", "Network Switch" and "Virtual Machine" need a node;
-- "Virtual Machine" and "Leased Copier" hide the purchase tab.
INSERT INTO ASSETTYPES (ASSETTYPE, NODEREQUIRED, SHOW_GENERAL_TAB, SHOW_PURCHASE_TAB, SHOW_WARRANTY_TAB, SHOW_USEREXT_TAB) VALUES
    ('Desktop PC',      'False', 'True', 'True',  'True',  'True'),
    ('Laptop',          'False', 'True', 'True',  'True',  'True'),
    ('Monitor',         'False', 'True', 'True',  'True',  'False'),
    ('Printer',         'False', 'True', 'True',  'True',  'True'),
    ('Mobile Phone',    'False', 'True', 'True',  'False', 'True'),
    ('Server',          'True',  'True', 'True',  'True',  'True'),
    ('Network Switch',  'True',  'True', 'True',  'True',  'False'),
    ('Virtual Machine', 'True',  'True', 'False', 'False', 'True'),
    ('Leased Copier',   'False', 'True', 'False', 'True',  'True');

-- Offices, each with a site code used in host names.
CREATE TEMP TABLE demo_sites (k INTEGER, code TEXT, name TEXT, floors INTEGER);
INSERT INTO demo_sites VALUES
    (0, 'LDN', 'London HQ',         6),
    (1, 'MAN', 'Manchester Office', 3),
    (2, 'LDS', 'Leeds Office',      2),
    (3, 'BRS', 'Bristol Office',    2),
    (4, 'EDI', 'Edinburgh Office',  2);

-- Ten host roles per site: 5 sites x 10 roles = 50 nodes.
CREATE TEMP TABLE demo_roles (k INTEGER, role TEXT, kind TEXT);
INSERT INTO demo_roles VALUES
    (0, 'DC01',     'server'),
    (1, 'DC02',     'server'),
    (2, 'FS01',     'server'),
    (3, 'APP01',    'server'),
    (4, 'APP02',    'server'),
    (5, 'SQL01',    'server'),
    (6, 'ESX01',    'server'),
    (7, 'ESX02',    'server'),
    (8, 'SWCORE01', 'switch'),
    (9, 'SWACC01',  'switch');

INSERT INTO NODES (NODENAME, OBJECTID)
SELECT s.code || '-' || r.role, 10401 + r.k * 5 + s.k
FROM demo_roles r, demo_sites s
ORDER BY r.k, s.k;

CREATE TEMP TABLE demo_nodes AS
SELECT n.NODENAME AS nodename, n.OBJECTID AS objectid, s.name AS site, r.kind AS kind,
       ROW_NUMBER() OVER (PARTITION BY r.kind ORDER BY n.OBJECTID) - 1 AS k,
       COUNT(*) OVER (PARTITION BY r.kind) AS cnt
FROM NODES n
JOIN demo_sites s ON n.NODENAME LIKE s.code || '-%'
JOIN demo_roles r ON n.NODENAME = s.code || '-' || r.role;

-- Share of each type (lo..hi out of 100), code of its asset tags, the kind of
-- node it sits on and two descriptions to choose from.
CREATE TEMP TABLE demo_types (type TEXT, lo INTEGER, hi INTEGER, code TEXT, nodekind TEXT, info1 TEXT, info2 TEXT);
INSERT INTO demo_types VALUES
    ('Desktop PC',       0, 29, 'DT', NULL,     'Standard office desktop',       'Workstation, dual screen'  ),
    ('Laptop',          30, 51, 'LT', NULL,     'Standard issue laptop',         'Field staff laptop with docking station'),
    ('Monitor',         52, 66, 'MN', NULL,     'Desk monitor',                  'Hot-desk monitor'),
    ('Printer',         67, 71, 'PR', NULL,     'Floor printer',                 'Department printer, duplex'),
    ('Mobile Phone',    72, 79, 'MP', NULL,     'Company mobile phone',          'On-call phone'),
    ('Server',          80, 84, 'SV', 'server', 'Rack server',                   'Rack server, redundant power'),
    ('Network Switch',  85, 88, 'NS', 'switch', 'Access switch',                 'Core switch stack member'),
    ('Virtual Machine', 89, 95, 'VM', 'server', 'Application server (virtual)',  'Test environment (virtual)'),
    ('Leased Copier',   96, 99, 'LC', NULL,     'Multifunction copier on lease', 'Print room copier on lease');

-- Models per type: k numbers them from 0 within the type.
CREATE TEMP TABLE demo_models (type TEXT, k INTEGER, manufacturer TEXT, model TEXT, itemsize TEXT,
                               price REAL, serialprefix TEXT, warranty INTEGER, support TEXT);
INSERT INTO demo_models VALUES
    ('Desktop PC', 0, 'Dell',    'OptiPlex 7010 SFF',          'SFF',         689.00, '',    3, 'Dell ProSupport, 01632 960101'),
    ('Desktop PC', 1, 'Dell',    'OptiPlex 5000 Tower',        'Tower',       749.00, '',    3, 'Dell ProSupport, 01632 960101'),
    ('Desktop PC', 2, 'HP',      'EliteDesk 800 G6',           'SFF',         812.50, 'CZC', 3, 'HP Care Pack, 01632 960102'),
    ('Desktop PC', 3, 'Lenovo',  'ThinkCentre M720q',          'Tiny',        574.00, 'M',   3, 'Lenovo Premier Support, 01632 960103'),
    ('Desktop PC', 4, 'Lenovo',  'ThinkCentre M90t',           'Tower',       935.00, 'M',   4, 'Lenovo Premier Support, 01632 960103'),
    ('Laptop',     0, 'Dell',    'Latitude 5420',              '14 in',       979.00, '',    3, 'Dell ProSupport, 01632 960101'),
    ('Laptop',     1, 'Lenovo',  'ThinkPad T14 Gen 3',         '14 in',      1149.00, 'PF',  3, 'Lenovo Premier Support, 01632 960103'),
    ('Laptop',     2, 'HP',      'EliteBook 840 G8',           '14 in',      1089.00, '5CG', 3, 'HP Care Pack, 01632 960102'),
    ('Laptop',     3, 'Apple',   'MacBook Pro 14 (M2 Pro)',    '14 in',      2149.00, 'C02', 1, 'AppleCare for Enterprise, 01632 960104'),
    ('Laptop',     4, 'Lenovo',  'ThinkPad X1 Carbon Gen 10',  '14 in',      1699.00, 'PF',  3, 'Lenovo Premier Support, 01632 960103'),
    ('Monitor',    0, 'Dell',    'P2422H',                     '24 in',       189.00, 'CN0', 3, 'Dell ProSupport, 01632 960101'),
    ('Monitor',    1, 'Dell',    'U2723QE',                    '27 in',       519.00, 'CN0', 3, 'Dell ProSupport, 01632 960101'),
    ('Monitor',    2, 'HP',      'E24 G5',                     '24 in',       179.00, 'CNK', 3, 'HP Care Pack, 01632 960102'),
    ('Monitor',    3, 'LG',      '27UL550-W',                  '27 in',       259.00, '2',   2, 'LG Business Support, 01632 960105'),
    ('Monitor',    4, 'Philips', '243V7QDAB',                  '24 in',       119.00, 'UK0', 3, 'Philips Monitor Care, 01632 960106'),
    ('Printer',    0, 'HP',      'LaserJet Pro M404dn',        'Desktop',     289.00, 'PHB', 1, 'HP Care Pack, 01632 960102'),
    ('Printer',    1, 'Brother', 'HL-L6400DW',                 'Desktop',     449.00, 'E7',  3, 'Brother Business Support, 01632 960107'),
    ('Printer',    2, 'Kyocera', 'ECOSYS P3155dn',             'Desktop',     399.00, 'VCF', 3, 'Kyocera Service Desk, 01632 960108'),
    ('Printer',    3, 'Xerox',   'VersaLink C400',             'Floor',       629.00, '3',   1, 'Xerox Support, 01632 960109'),
    ('Mobile Phone', 0, 'Apple',   'iPhone 13 128GB',          '6.1 in',      599.00, 'F',   1, 'AppleCare for Enterprise, 01632 960104'),
    ('Mobile Phone', 1, 'Apple',   'iPhone SE (3rd gen) 64GB', '4.7 in',      429.00, 'F',   1, 'AppleCare for Enterprise, 01632 960104'),
    ('Mobile Phone', 2, 'Samsung', 'Galaxy A54 5G',            '6.4 in',      399.00, 'R5',  2, 'Samsung Business, 01632 960110'),
    ('Mobile Phone', 3, 'Samsung', 'Galaxy S23',               '6.1 in',      769.00, 'R5',  2, 'Samsung Business, 01632 960110'),
    ('Server',     0, 'Dell',    'PowerEdge R650',             '1U',         7450.00, '',    5, 'Dell ProSupport Plus, 01632 960111'),
    ('Server',     1, 'Dell',    'PowerEdge R750',             '2U',        11890.00, '',    5, 'Dell ProSupport Plus, 01632 960111'),
    ('Server',     2, 'HPE',     'ProLiant DL380 Gen10',       '2U',         9875.00, 'CZJ', 5, 'HPE Pointnext, 01632 960112'),
    ('Server',     3, 'Lenovo',  'ThinkSystem SR630 V2',       '1U',         6920.00, 'J30', 3, 'Lenovo Data Centre Support, 01632 960113'),
    ('Network Switch', 0, 'Cisco',   'Catalyst 9200-48P',      '1U',         4350.00, 'FOC', 5, 'Cisco SMARTnet, 01632 960114'),
    ('Network Switch', 1, 'Cisco',   'Catalyst 9300-24T',      '1U',         6180.00, 'FOC', 5, 'Cisco SMARTnet, 01632 960114'),
    ('Network Switch', 2, 'HPE Aruba', '2930F-48G-PoE+',       '1U',         3290.00, 'SG',  5, 'Aruba Support, 01632 960115'),
    ('Network Switch', 3, 'Juniper', 'EX2300-48P',             '1U',         3740.00, 'JW',  3, 'Juniper Care, 01632 960116'),
    ('Virtual Machine', 0, 'VMware',    'vSphere 7 VM',        '4 vCPU / 16 GB', 0, 'VMW-', 0, 'IT Operations, ext. 4410'),
    ('Virtual Machine', 1, 'VMware',    'vSphere 7 VM',        '2 vCPU / 8 GB',  0, 'VMW-', 0, 'IT Operations, ext. 4410'),
    ('Virtual Machine', 2, 'Microsoft', 'Hyper-V Gen 2 VM',    '8 vCPU / 32 GB', 0, 'HV-',  0, 'IT Operations, ext. 4410'),
    ('Leased Copier', 0, 'Canon',   'imageRUNNER ADVANCE C5535i', 'Floor',      0, 'XPD', 0, 'Harbour Office Equipment, 01632 960120'),
    ('Leased Copier', 1, 'Ricoh',   'IM C3000',                'Floor',           0, 'C7',  0, 'Harbour Office Equipment, 01632 960120'),
    ('Leased Copier', 2, 'Konica Minolta', 'bizhub C300i',     'Floor',           0, 'AA2', 0, 'Harbour Office Equipment, 01632 960120');

CREATE TEMP TABLE demo_depts (k INTEGER, name TEXT, costcentre TEXT);
INSERT INTO demo_depts VALUES
    (0, 'Finance',          'CC-1100'),
    (1, 'Human Resources',  'CC-1200'),
    (2, 'IT Operations',    'CC-1300'),
    (3, 'Sales',            'CC-1400'),
    (4, 'Marketing',        'CC-1500'),
    (5, 'Engineering',      'CC-1600'),
    (6, 'Customer Service', 'CC-1700'),
    (7, 'Legal',            'CC-1800'),
    (8, 'Facilities',       'CC-1900'),
    (9, 'Procurement',      'CC-2000');

CREATE TEMP TABLE demo_people (k INTEGER, name TEXT);
INSERT INTO demo_people VALUES
    (0, 'A. Patel'), (1, 'J. Thompson'), (2, 'S. O''Brien'), (3, 'M. Kowalski'),
    (4, 'R. Hughes'), (5, 'L. Chen'), (6, 'D. Evans'), (7, 'K. Murphy');

CREATE TEMP TABLE demo_suppliers (k INTEGER, name TEXT);
INSERT INTO demo_suppliers VALUES
    (0, 'Northgate IT Supplies Ltd'), (1, 'Pennine Computer Services'),
    (2, 'Citywide Business Systems'), (3, 'Atlas Network Solutions'),
    (4, 'Meridian Technology Direct');

CREATE TEMP TABLE demo_notes (k INTEGER, note TEXT);
INSERT INTO demo_notes VALUES
    (0, 'Reimaged after hardware fault'),
    (1, 'Spare, held in the IT store'),
    (2, 'Asset label replaced'),
    (3, 'Due for replacement next financial year'),
    (4, 'Moved during office refit'),
    (5, 'Checked at annual audit');

-- Counts of models per type.
CREATE TEMP TABLE demo_modelcount AS
SELECT type, COUNT(*) AS cnt FROM demo_models GROUP BY type;

WITH RECURSIVE seq(n) AS (
    SELECT 1 UNION ALL SELECT n + 1 FROM seq WHERE n < 2000
),
-- Independent hashes of the row number (multiplicative hashing, 32 bits).
h AS (
    SELECT n,
           ((n * 2654435761) % 4294967296) / 65536              AS h1,
           (((n + 7919) * 2246822519) % 4294967296) / 65536     AS h2,
           (((n + 104729) * 3266489917) % 4294967296) / 65536   AS h3,
           (((n + 1299709) * 668265263) % 4294967296) / 65536  AS h4,
           (n * 2891336453) % 4294967296                        AS hs,
           (((n + 15485863) * 374761393) % 4294967296) / 65536  AS h5
    FROM seq
),
picked AS (
    SELECT h.*, t.type, t.code, t.nodekind,
           CASE WHEN h5 % 2 = 0 THEN t.info1 ELSE t.info2 END AS info,
           m.manufacturer, m.model, m.itemsize, m.price, m.serialprefix, m.warranty, m.support,
           d.name AS dept, d.costcentre,
           s.name AS sitename, s.floors,
           nd.nodename, nd.objectid, nd.site AS nodesite
    FROM h
    JOIN demo_types t ON h1 % 100 BETWEEN t.lo AND t.hi
    JOIN demo_modelcount mc ON mc.type = t.type
    JOIN demo_models m ON m.type = t.type AND m.k = h2 % mc.cnt
    JOIN demo_depts d ON d.k = CASE WHEN t.nodekind IS NOT NULL THEN 2 ELSE h3 % 10 END
    JOIN demo_sites s ON s.k = CASE WHEN h4 % 10 < 4 THEN 0 ELSE 1 + h4 % 4 END
    LEFT JOIN demo_nodes nd ON nd.kind = t.nodekind AND nd.k = h5 % nd.cnt
),
dated AS (
    SELECT p.*,
           date('2016-01-04', '+' || ((h3 * 7 + h4) % 3200) || ' days') AS purchdate,
           date('2022-01-01', '+' || (h4 % 1400) || ' days')          AS leaseend
    FROM picked p
)
INSERT INTO ASSETS (ASSETTYPE, INFO, ASSETID, MANUFACTURER, MODEL, SERIALNUM, ASLOCATION, DEPT,
                    NODENAME, FKNODES, PURCHDATE, PURCHASER, SUPPLIER, ITEMVALUE, ITEMSIZE, QTY,
                    MAINTRENEW, SUPPORTCONTACT, USR_COSTCENTRE, USR_NOTES)
SELECT type,
       info,
       code || '-' || printf('%05d', n),
       manufacturer,
       model,
       -- seven characters of the hash in base 31, after the maker's prefix
       serialprefix
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + hs % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 31) % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 961) % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 29791) % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 923521) % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 28629151) % 31, 1)
           || substr('BCDFGHJKLMNPQRSTVWXYZ0123456789', 1 + (hs / 887503681) % 31, 1),
       CASE
           WHEN nodekind IS NOT NULL AND type = 'Virtual Machine' THEN 'Hosted, ' || nodesite || ' server room'
           WHEN nodekind IS NOT NULL THEN nodesite || ' server room, rack ' || printf('R%02d', 1 + h3 % 12)
           WHEN type = 'Mobile Phone' THEN sitename || ', issued to user'
           ELSE sitename || ', floor ' || (1 + h3 % floors) || ', room ' || (1 + h3 % floors) || printf('%02d', 1 + (h5 / 3) % 40)
       END,
       dept,
       nodename,
       objectid,
       CASE WHEN type IN ('Virtual Machine', 'Leased Copier') THEN NULL ELSE purchdate END,
       CASE WHEN type IN ('Virtual Machine', 'Leased Copier') THEN NULL
            ELSE (SELECT name FROM demo_people WHERE k = h2 % 8) END,
       CASE WHEN type IN ('Virtual Machine', 'Leased Copier') THEN NULL
            ELSE (SELECT name FROM demo_suppliers WHERE k = h4 % 5) END,
       CASE WHEN type IN ('Virtual Machine', 'Leased Copier') THEN NULL
            ELSE round(price * (88 + h5 % 25) / 100.0, 2) END,
       itemsize,
       CASE WHEN type = 'Monitor' AND h3 % 4 = 0 THEN 2 ELSE 1 END,
       CASE WHEN type = 'Leased Copier' THEN leaseend
            WHEN type IN ('Virtual Machine', 'Mobile Phone') THEN NULL
            ELSE date(purchdate, '+' || warranty || ' years') END,
       support,
       costcentre,
       (SELECT note FROM demo_notes WHERE k = (h2 / 7) % 20)
FROM dated
ORDER BY n;

DROP TABLE demo_modelcount;
DROP TABLE demo_notes;
DROP TABLE demo_suppliers;
DROP TABLE demo_people;
DROP TABLE demo_depts;
DROP TABLE demo_models;
DROP TABLE demo_types;
DROP TABLE demo_nodes;
DROP TABLE demo_roles;
DROP TABLE demo_sites;

COMMIT;
