#pragma once

#include <QLocale>
#include <QString>

namespace core {

// The user's preferences: string values in the "Preferences" section of the settings
// store, each read into a buffer of PreferencesBufferLength characters.
inline constexpr auto PreferencesKey = "Preferences";
inline constexpr int PreferencesBufferLength = 259;

namespace preference {
inline constexpr auto EditLayout = "EditLayout";             // "Bottom" or "Right"
inline constexpr auto DateFormat = "DateFormat";             // "Default" or "Custom"
inline constexpr auto DateFormatString = "DateFormatString"; // the custom date format
inline constexpr auto KeepLog = "KeepLog";                   // "Yes" or "No"
inline constexpr auto LogFile = "LogFile";
inline constexpr auto HideID = "HideID";
inline constexpr auto AppendID = "AppendID";
inline constexpr auto Defaults = "Defaults";
inline constexpr auto DateDefault = "DateDefault";
inline constexpr auto MoneyDefault = "MoneyDefault";
inline constexpr auto Date = "Date";   // in the short date format in force when saved
inline constexpr auto Money = "Money"; // a number as text, never checked
} // namespace preference

// The stored words. Every comparison with them is exact and case-sensitive; any other
// text counts as the opposite choice.
inline constexpr auto Bottom = "Bottom";
inline constexpr auto Right = "Right";
inline constexpr auto DefaultFormat = "Default";
inline constexpr auto CustomFormat = "Custom";
inline constexpr auto Yes = "Yes";
inline constexpr auto No = "No";

inline constexpr auto DefaultDateText = "1.1.1990";
inline constexpr auto DefaultMoneyText = "0";

// Everything the preferences dialog edits, as its controls hold it. The initial values
// are the dialog's own defaults.
struct PreferenceValues {
    bool layoutBottom = true;
    bool defaultDateFormat = true;
    QString dateFormatString = QStringLiteral("dd-mm-yyyy");
    bool keepLog = false;
    QString logFile = QStringLiteral("quillet.log");
    bool hideId = true;
    bool appendId = true;
    bool setDefaults = true;
    bool dateDefaults = true;
    bool moneyDefaults = true;
    QString defaultDate = QString::fromLatin1(DefaultDateText);
    QString defaultMoney = QString::fromLatin1(DefaultMoneyText);

    bool operator==(const PreferenceValues&) const = default;
};

// Reads every stored value that exists over `values`; the others keep what they hold.
void ReadPreferenceValues(PreferenceValues& values);

// Saves, in this order: EditLayout, DateFormat, DateFormatString, KeepLog, LogFile,
// HideID, AppendID, Defaults, DateDefault, MoneyDefault. Then applies the date format
// (the locale's when the default format is chosen, else dateFormatString), reads
// defaultDate with it and writes "Date" as that date in the new short date format, and
// last writes "Money" as it stands.
//
// When defaultDate is not a date, throws ConversionError with the message of the
// conversion: "Date" and "Money" are left as they were, everything before them is
// saved and the date format is applied.
void WritePreferenceValues(const PreferenceValues& values, const QLocale& locale);
void WritePreferenceValues(const PreferenceValues& values);

// What the main window keeps from the stored preferences. The initial values are the
// ones it has before anything is read.
struct MainPreferences {
    bool layoutBottom = true; // the asset editor below the grid, else to its right
    QString customDateFormat; // empty: the locale's short date format
    bool hideId = true;       // hide the ID column of ASSETS in the grid
    bool appendId = true;     // append ID to queries on ASSETS that lack it
};

struct PreferenceChanges {
    bool layoutChanged = false;  // rebuild the asset editor in its new place
    bool logFileChanged = false; // the activity log now goes to the stored file
};

// Reads the stored preferences into `state` and applies them, at start-up and after
// the preferences dialog closed with OK:
//  - EditLayout, when stored, sets the layout flag;
//  - with KeepLog "Yes" and a stored LogFile that is not empty and differs from the
//    current log file, writes "log file changed to <file>" to the current log, then
//    makes LogFile the log file. A KeepLog of "No" changes nothing. A file name too long
//    for the log path is ignored, and a current log that cannot be written does not
//    stop the switch;
//  - DateFormat "Default" or missing applies the locale's date format, anything else
//    the stored DateFormatString;
//  - HideID and AppendID, when stored, set their flags.
// Values that are not stored leave the state as it is. Applying the hide-ID flag to
// the grid is the caller's part.
PreferenceChanges LoadPreferences(MainPreferences& state, const QLocale& locale);
PreferenceChanges LoadPreferences(MainPreferences& state);

// The defaults the asset editor gives a new record, read afresh for each new record.
struct NewRecordDefaults {
    bool dateDefaults = true;  // false also when defaults are off altogether
    bool moneyDefaults = true; // likewise
    QString dateText;          // "Date", else "1.1.1990"; read it with StrToDate
    QString moneyText;         // "Money", else "0"
};

NewRecordDefaults ReadNewRecordDefaults();

} // namespace core
