#pragma once

#include <QString>

namespace assets {

// The sort text after a click on the title of the column `fieldName`, given the data
// set's current sort text: the first click sorts ascending, the next one descending, the
// next ascending again, and a click on another column starts ascending.
//
// "The same column" is a plain substring test on the whole sort text, so a column whose
// name is part of the previously sorted column's name (TAG after ASSET_TAG) counts as
// that column. An empty field name occurs in no sort text.
QString NextSortText(const QString& currentSortText, const QString& fieldName);

} // namespace assets
