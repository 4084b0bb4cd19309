// The Import dialog: the settings it shows and keeps per kind of file, its checks on OK
// and its preview.

#include "core/registry.h"
#include "core/ui/messages.h"
#include "interchange/ui/delimiterchoice.h"
#include "interchange/ui/import.h"
#include "support/testsupport.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>

using interchange::ui::TFormImport;

class TestImportForm : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        testsupport::UseTemporarySettings();
        ::ui::SetUnattended(true);
    }

    // Stored values fill the controls; OK writes them back under the kind's own key.
    void settingsRoundTrip_data() {
        QTest::addColumn<bool>("typesMode");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("onError");
        QTest::addColumn<QString>("checked");
        testsupport::AddRow("assets, other delimiter, stop", false, QStringLiteral("||"), 4,
                            QStringLiteral("Stop"), QStringLiteral("RB_Stop"));
        testsupport::AddRow("types, tab, any other word rejects", true, QStringLiteral("\t"), 0,
                            QStringLiteral("stop"), QStringLiteral("RB_Reject"));
    }

    void settingsRoundTrip() {
        QFETCH(bool, typesMode);
        QFETCH(QString, delimiter);
        QFETCH(int, item);
        QFETCH(QString, onError);
        QFETCH(QString, checked);
        const QString key = typesMode ? "TypesExportImport" : "ExportImport";
        const QString file = m_dir.filePath(QStringLiteral("in.txt"));
        QVERIFY(testsupport::WriteFile(file, "one\r\ntwo\r\nAssetType;Info\r\nPC;x\r\n"));
        core::WriteRegistryStrings(key, {{"FileName", file},
                                         {"Delimiter", delimiter},
                                         {"StartRow", "3"},
                                         {"OnError", onError},
                                         {"Node", ""}});
        TFormImport form(typesMode);
        form.show();
        QCOMPARE(form.windowTitle(), typesMode ? QStringLiteral("Import Asset Types")
                                               : QStringLiteral("Import Assets"));
        QCOMPARE(form.EditFileName->text(), file);
        QCOMPARE(form.Delimiter->DelimList->currentIndex(), item);
        QCOMPARE(form.Delimiter->EditDelimiter->isVisible(), item == 4);
        QCOMPARE(form.StartRowUpDown->value(), 3);
        QVERIFY(form.findChild<QRadioButton*>(checked)->isChecked());
        QCOMPARE(form.EditUnspecified->isVisible(), !typesMode);
        QCOMPARE(form.EditUnspecified->text(), QStringLiteral("UNSPECIFIED"));
        QCOMPARE(form.MemoFile->toPlainText(), QStringLiteral("AssetType;Info\nPC;x\n"));

        form.StartRowUpDown->setValue(1);
        QCOMPARE(form.MemoFile->toPlainText().section(u'\n', 0, 0), QStringLiteral("one"));
        form.RB_Ignore->setChecked(true);
        form.BtnOK->click();
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QString stored;
        const QList<std::pair<QString, QString>> expected{
            {"OnError", "Ignore"}, {"StartRow", "1"}, {"ID", "Auto"}, {"Delimiter", delimiter}};
        for (const auto& [name, value] : expected) {
            QVERIFY(core::ReadRegistryString(key, name, stored, 255, std::nullopt));
            QCOMPARE(stored, value);
        }
    }

    void okNeedsFileAndDelimiter_data() {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("otherDelimiter");
        QTest::addColumn<QString>("printed");
        testsupport::AddRow("no file", QString(), QStringLiteral(";"),
                            QStringLiteral("Error: File Name must be specified.\n"));
        testsupport::AddRow("no delimiter", QStringLiteral("x.txt"), QString(),
                            QStringLiteral("Error: Fields Delimiter must be specified.\n"));
    }

    void okNeedsFileAndDelimiter() {
        QFETCH(QString, fileName);
        QFETCH(QString, otherDelimiter);
        QFETCH(QString, printed);
        TFormImport form(false);
        form.show();
        form.EditFileName->setText(fileName);
        form.Delimiter->DelimList->setCurrentIndex(4);
        form.Delimiter->EditDelimiter->setText(otherDelimiter);
        QCOMPARE(testsupport::PrintedBy([&] { form.BtnOK->click(); }), printed);
        QVERIFY(form.isVisible());
    }
};

QTEST_MAIN(TestImportForm)
#include "test_importform.moc"
