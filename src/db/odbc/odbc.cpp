#include "db/odbc/odbc.h"
