#!/usr/bin/python3
# The import a user would write instead: one execute per row, one transaction.
#   import_pyodbc.py CONNECTION-STRING FILE
import sys

import pyodbc

connection = pyodbc.connect(sys.argv[1], autocommit=False)
cursor = connection.cursor()
with open(sys.argv[2], encoding="utf-8", newline="") as lines:
    header = lines.readline().rstrip("\r\n").split(";")
    sql = "insert into ASSETS (%s) values (%s)" % (
        ", ".join(header[1:]), ", ".join("?" * (len(header) - 1)))
    for line in lines:
        values = line.rstrip("\r\n").split(";")[1:len(header)]
        cursor.execute(sql, [value if value else None for value in values])
connection.commit()
