#pragma once

#include "assets/tabledataset.h"

#include <QString>

namespace assets {

// What a new asset record is given, read from the preferences each time a record is
// started: defaults are on unless "Defaults" is stored and not exactly "Yes"; date and
// money defaults likewise with "DateDefault" and "MoneyDefault"; the date is "Date" when
// stored, else 1.1.1990, and the amount "Money", else 0.
struct NewRecordDefaults {
    bool dates = false;
    bool money = false;
    QString dateText;
    QString moneyText;
};

NewRecordDefaults ReadNewRecordDefaults();

// Gives every date and date-time field the default date (read and written again in the
// short date format; a time of day gets midnight) and every floating-point or decimal
// field the default amount. Throws core::ConversionError when a default does not read.
void ApplyNewRecordDefaults(TableDataSet& record, const NewRecordDefaults& defaults);

} // namespace assets
