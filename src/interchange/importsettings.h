#pragma once

#include <QString>

namespace interchange {

enum OnErrorPolicy { OnErrorIgnore = 0, OnErrorStop = 1, OnErrorReject = 2 };

// What the Import dialog asks for, kept per kind of file in the settings store.
struct ImportSettings {
    QString FileName;
    QString Delimiter;
    QString Node;
    QString InitialDir;
    bool IdMode = false;
    int StartRow = 1;
    int OnError = OnErrorIgnore;
    bool TypesMode = false;
};

// Missing values leave the fields as they are.
void ReadImportSettings(ImportSettings& settings);
void WriteImportSettings(const ImportSettings& settings);

} // namespace interchange
