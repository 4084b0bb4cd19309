#include "core/dateformat.h"
#include "core/preferences.h"
#include "core/registry.h"
#include "core/ui/messages.h"
#include "core/ui/preferences.h"
#include "support/preferencestore.h"
#include "support/testsupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <cstdio>
#include <functional>
#include <map>
#include <unistd.h>

using ui::TPreferences;

namespace {

const QLocale enGB(QStringLiteral("en_GB"));

using Values = testsupport::PreferenceValues;
using testsupport::StoredPreference;
using testsupport::StoredPreferenceNames;
using testsupport::StorePreferences;

template <typename Widget> Widget* control(const TPreferences& dialog, const char* name) {
    auto* widget = dialog.findChild<Widget*>(QString::fromLatin1(name));
    if (!widget)
        qFatal("no control %s", name);
    return widget;
}

// What message boxes print in an unattended run while `action` runs.
QString boxesShownBy(const std::function<void()>& action) {
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(file.handle(), STDERR_FILENO);
    action();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    file.seek(0);
    return QString::fromLocal8Bit(file.readAll());
}

void clickTab(const TPreferences& dialog, int index) {
    QTabBar* tabs = control<QTabWidget>(dialog, "PageControl1")->tabBar();
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
}

// A click on the box or the circle of a check box or radio button, or on a button.
void click(QAbstractButton* button) {
    const QPoint where = qobject_cast<QCheckBox*>(button) || qobject_cast<QRadioButton*>(button)
                             ? QPoint(6, button->height() / 2)
                             : button->rect().center();
    QTest::mouseClick(button, Qt::LeftButton, {}, where);
}

void replaceText(QLineEdit* edit, const QString& text) {
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

} // namespace

Q_DECLARE_METATYPE(Values)
Q_DECLARE_METATYPE(std::optional<QString>)

class TestPreferencesDialog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
    }

    void init() {
        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet")).clear();
        core::ApplyDateFormat(QString(), enGB);
    }

    void opensWithItsOwnDefaults() {
        TPreferences dialog(nullptr, enGB);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Preferences"));
        QCOMPARE(dialog.property("helpContext").toInt(), 600);

        auto* pages = control<QTabWidget>(dialog, "PageControl1");
        QCOMPARE(pages->count(), 5);
        QCOMPARE(pages->currentIndex(), 0);
        QVERIFY(control<QToolButton>(dialog, "BtnBottom")->isChecked());
        QVERIFY(!control<QToolButton>(dialog, "BtnRight")->isChecked());
        QVERIFY(control<QRadioButton>(dialog, "RB_FormatDefault")->isChecked());
        QVERIFY(!control<QRadioButton>(dialog, "RB_FormatCustom")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditFormat")->text(), QStringLiteral("dd-mm-yyyy"));
        QVERIFY(!control<QCheckBox>(dialog, "CB_KeepLog")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditLogFile")->text(), QStringLiteral("quillet.log"));
        QVERIFY(control<QCheckBox>(dialog, "CB_HideID")->isChecked());
        QVERIFY(control<QCheckBox>(dialog, "CB_AppendID")->isChecked());
        QVERIFY(control<QCheckBox>(dialog, "CB_SetDefault")->isChecked());
        QVERIFY(control<QCheckBox>(dialog, "CB_DateDefaults")->isChecked());
        QVERIFY(control<QCheckBox>(dialog, "CB_MoneyFields")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditDateFields")->text(),
                 QStringLiteral("01/01/1990"));
        QCOMPARE(control<QLineEdit>(dialog, "EditMoneyFields")->text(), QStringLiteral("0"));
        QVERIFY(control<QPushButton>(dialog, "BtnOk")->isDefault());
        QCOMPARE(dialog.values().defaultDate, QStringLiteral("01/01/1990"));
        QVERIFY(StoredPreferenceNames().isEmpty()); // opening writes nothing
    }

    void captions_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption");

        QTest::newRow("BtnBottom") << "BtnBottom"
                                   << "Bottom";
        QTest::newRow("BtnRight") << "BtnRight"
                                  << "Right";
        QTest::newRow("RB_FormatDefault") << "RB_FormatDefault"
                                          << "&Default format";
        QTest::newRow("RB_FormatCustom") << "RB_FormatCustom"
                                         << "&Custom";
        QTest::newRow("CB_KeepLog") << "CB_KeepLog"
                                    << "&Save error log as:";
        QTest::newRow("BtnBrowse") << "BtnBrowse"
                                   << "[...]";
        QTest::newRow("CB_HideID") << "CB_HideID"
                                   << "&Hide the ID column in the Main window";
        QTest::newRow("CB_AppendID") << "CB_AppendID"
                                     << "A&ppend the ID column to the SQL code";
        QTest::newRow("CB_SetDefault") << "CB_SetDefault"
                                       << "&Set default values:";
        QTest::newRow("CB_DateDefaults") << "CB_DateDefaults"
                                         << "&Date fields";
        QTest::newRow("CB_MoneyFields") << "CB_MoneyFields"
                                        << "&Currency fields";
        QTest::newRow("BtnOk") << "BtnOk"
                               << "OK";
        QTest::newRow("BtnCancel") << "BtnCancel"
                                   << "Cancel";
    }

    void captions() {
        QFETCH(QString, name);
        QFETCH(QString, caption);

        TPreferences dialog(nullptr, enGB);
        auto* button = dialog.findChild<QAbstractButton*>(name);
        QVERIFY(button);
        QCOMPARE(button->text(), caption);
    }

    void pagesAndNotes() {
        TPreferences dialog(nullptr, enGB);
        auto* pages = control<QTabWidget>(dialog, "PageControl1");
        const QStringList expected{QStringLiteral("&Main window layout"),
                                   QStringLiteral("Da&te display format"),
                                   QStringLiteral("&Log file"), QStringLiteral("Assets &ID column"),
                                   QStringLiteral("De&faults")};
        for (int i = 0; i < pages->count(); ++i)
            QCOMPARE(pages->tabText(i), expected.at(i));

        // The layout buttons sit in their group; the notes on their pages.
        QVERIFY(pages->widget(0)->findChild<QToolButton*>(QStringLiteral("BtnBottom")));
        auto labelsOf = [](QWidget* page) {
            QStringList texts;
            for (const QLabel* label : page->findChildren<QLabel*>())
                texts << label->text();
            return texts;
        };
        const QString sqlNote =
            QStringLiteral("Select Execute SQL from the Query Menu to display your changes");
        const QStringList datePage = labelsOf(pages->widget(1));
        QVERIFY(datePage.contains(QStringLiteral(
            "The date format should only use the date separator character and the  m, mm, d, "
            "dd, yy, and yyyy format specifiers.")));
        QVERIFY(datePage.contains(sqlNote));
        QVERIFY(labelsOf(pages->widget(3)).contains(sqlNote));
        QVERIFY(pages->widget(2)->findChild<QPushButton*>(QStringLiteral("BtnBrowse")));
        QVERIFY(pages->widget(4)->findChild<QLineEdit*>(QStringLiteral("EditMoneyFields")));
    }

    void defaultFormatLabel_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("shown");

        QTest::newRow("en_US") << "en_US"
                               << "m/d/yy";
        QTest::newRow("en_GB") << "en_GB"
                               << "dd/mm/yyyy";
        QTest::newRow("de_DE") << "de_DE"
                               << "dd.mm.yy";
        QTest::newRow("fr_FR") << "fr_FR"
                               << "dd/mm/yyyy";
    }

    void defaultFormatLabel() {
        QFETCH(QString, locale);
        QFETCH(QString, shown);

        // A custom format in force does not change what the label shows.
        core::ApplyDateFormat(QStringLiteral("yyyy.mm.dd"), enGB);
        TPreferences dialog(nullptr, QLocale(locale));
        QCOMPARE(control<QLabel>(dialog, "DefaultDateFormat")->text(), shown);
    }

    void opensWithStoredValues() {
        StorePreferences({{QStringLiteral("EditLayout"), QStringLiteral("bottom")},
                          {QStringLiteral("DateFormat"), QStringLiteral("Custom")},
                          {QStringLiteral("DateFormatString"), QStringLiteral("yyyy.mm.dd")},
                          {QStringLiteral("KeepLog"), QStringLiteral("Yes")},
                          {QStringLiteral("LogFile"), QStringLiteral("/var/log/q.log")},
                          {QStringLiteral("HideID"), QStringLiteral("No")},
                          {QStringLiteral("AppendID"), QStringLiteral("yes")},
                          {QStringLiteral("Defaults"), QStringLiteral("No")},
                          {QStringLiteral("DateDefault"), QStringLiteral("Yes")},
                          {QStringLiteral("MoneyDefault"), QStringLiteral("")},
                          {QStringLiteral("Date"), QStringLiteral("3.3.2003")},
                          {QStringLiteral("Money"), QStringLiteral("12,5")}});
        TPreferences dialog(nullptr, enGB);

        QVERIFY(control<QToolButton>(dialog, "BtnRight")->isChecked());
        QVERIFY(!control<QToolButton>(dialog, "BtnBottom")->isChecked());
        QVERIFY(control<QRadioButton>(dialog, "RB_FormatCustom")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditFormat")->text(), QStringLiteral("yyyy.mm.dd"));
        QVERIFY(control<QCheckBox>(dialog, "CB_KeepLog")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditLogFile")->text(),
                 QStringLiteral("/var/log/q.log"));
        QVERIFY(!control<QCheckBox>(dialog, "CB_HideID")->isChecked());
        QVERIFY(!control<QCheckBox>(dialog, "CB_AppendID")->isChecked());
        QVERIFY(!control<QCheckBox>(dialog, "CB_SetDefault")->isChecked());
        QVERIFY(control<QCheckBox>(dialog, "CB_DateDefaults")->isChecked());
        QVERIFY(!control<QCheckBox>(dialog, "CB_MoneyFields")->isChecked());
        QCOMPARE(control<QLineEdit>(dialog, "EditMoneyFields")->text(), QStringLiteral("12,5"));
        QCOMPARE(control<QTabWidget>(dialog, "PageControl1")->currentIndex(), 0);
    }

    // Whatever "Date" holds, the dialog shows 1 January 1990 in the short format in force.
    void alwaysOpensWithFirstOfJanuary1990_data() {
        QTest::addColumn<QString>("custom");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("shown");

        QTest::newRow("en_GB") << ""
                               << "en_GB"
                               << "01/01/1990";
        QTest::newRow("en_US") << ""
                               << "en_US"
                               << "1/1/90";
        QTest::newRow("de_DE") << ""
                               << "de_DE"
                               << "01.01.90";
        QTest::newRow("custom") << "yyyy.mm.dd"
                                << "en_GB"
                                << "1990.01.01";
        QTest::newRow("custom dashes") << "d-m-yyy"
                                       << "de_DE"
                                       << "1-1-1990";
    }

    void alwaysOpensWithFirstOfJanuary1990() {
        QFETCH(QString, custom);
        QFETCH(QString, locale);
        QFETCH(QString, shown);

        StorePreferences({{QStringLiteral("Date"), QStringLiteral("24.12.2012")}});
        core::ApplyDateFormat(custom, QLocale(locale));
        TPreferences dialog(nullptr, QLocale(locale));
        QCOMPARE(control<QLineEdit>(dialog, "EditDateFields")->text(), shown);
    }

    void okSavesEveryControl() {
        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto* pages = control<QTabWidget>(dialog, "PageControl1");

        click(control<QToolButton>(dialog, "BtnRight"));

        clickTab(dialog, 1);
        QCOMPARE(pages->currentIndex(), 1);
        click(control<QRadioButton>(dialog, "RB_FormatCustom"));
        replaceText(control<QLineEdit>(dialog, "EditFormat"), QStringLiteral("yyyy.mm.dd"));

        clickTab(dialog, 2);
        QCOMPARE(pages->currentIndex(), 2);
        click(control<QCheckBox>(dialog, "CB_KeepLog"));
        replaceText(control<QLineEdit>(dialog, "EditLogFile"), QStringLiteral("/tmp/chosen.log"));

        clickTab(dialog, 3);
        click(control<QCheckBox>(dialog, "CB_HideID"));

        clickTab(dialog, 4);
        QCOMPARE(pages->currentIndex(), 4);
        click(control<QCheckBox>(dialog, "CB_MoneyFields"));
        replaceText(control<QLineEdit>(dialog, "EditDateFields"), QStringLiteral("24.12.2001"));
        replaceText(control<QLineEdit>(dialog, "EditMoneyFields"), QStringLiteral("7,5"));

        const QString boxes =
            boxesShownBy([&dialog] { click(control<QPushButton>(dialog, "BtnOk")); });
        QVERIFY2(boxes.isEmpty(), qPrintable(boxes));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());

        const Values expected{{"EditLayout", "Right"},
                              {"DateFormat", "Custom"},
                              {"DateFormatString", "yyyy.mm.dd"},
                              {"KeepLog", "Yes"},
                              {"LogFile", "/tmp/chosen.log"},
                              {"HideID", "No"},
                              {"AppendID", "Yes"},
                              {"Defaults", "Yes"},
                              {"DateDefault", "Yes"},
                              {"MoneyDefault", "No"},
                              {"Date", "2001.12.24"},
                              {"Money", "7,5"}};
        for (const auto& [name, value] : expected)
            QCOMPARE(name + QLatin1Char('=') +
                         StoredPreference(name).value_or(QStringLiteral("<missing>")),
                     name + QLatin1Char('=') + value);
        QCOMPARE(StoredPreferenceNames().size(), int(expected.size()));
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("yyyy.mm.dd"));
        QCOMPARE(core::DateSeparator(), QLatin1Char('.'));
    }

    void enterPressesOk() {
        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto* money = control<QLineEdit>(dialog, "EditMoneyFields");
        replaceText(money, QStringLiteral("3"));
        QTest::keyClick(money, Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(StoredPreference(QStringLiteral("Money")), QStringLiteral("3"));
        QCOMPARE(StoredPreference(QStringLiteral("Date")), QStringLiteral("01/01/1990"));
    }

    void cancelSavesNothing_data() {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Cancel button") << false;
        QTest::newRow("Escape key") << true;
    }

    void cancelSavesNothing() {
        QFETCH(bool, escape);

        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        click(control<QToolButton>(dialog, "BtnRight"));
        control<QRadioButton>(dialog, "RB_FormatCustom")->setChecked(true);
        replaceText(control<QLineEdit>(dialog, "EditFormat"), QStringLiteral("yyyy.mm.dd"));
        control<QCheckBox>(dialog, "CB_HideID")->setChecked(false);
        if (escape)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            click(control<QPushButton>(dialog, "BtnCancel"));

        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(!dialog.isVisible());
        QVERIFY(StoredPreferenceNames().isEmpty());
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("dd/mm/yyyy"));
    }

    void impossibleDefaultDate() {
        StorePreferences({{QStringLiteral("Date"), QStringLiteral("2.2.2002")},
                          {QStringLiteral("Money"), QStringLiteral("5")},
                          {QStringLiteral("HideID"), QStringLiteral("Yes")}});
        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        replaceText(control<QLineEdit>(dialog, "EditDateFields"), QStringLiteral("31.02.1990"));
        replaceText(control<QLineEdit>(dialog, "EditMoneyFields"), QStringLiteral("99"));
        control<QCheckBox>(dialog, "CB_HideID")->setChecked(false);
        control<QRadioButton>(dialog, "RB_FormatCustom")->setChecked(true);

        const QString boxes =
            boxesShownBy([&dialog] { click(control<QPushButton>(dialog, "BtnOk")); });
        QCOMPARE(boxes, QStringLiteral("Error: Default Date Error\n"));
        QVERIFY(ui::ErrorWasShown());

        // The dialog closes all the same.
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());
        // Everything before "Date" is saved; "Date" and "Money" keep their values.
        QCOMPARE(StoredPreference(QStringLiteral("HideID")), QStringLiteral("No"));
        QCOMPARE(StoredPreference(QStringLiteral("DateFormat")), QStringLiteral("Custom"));
        QCOMPARE(StoredPreference(QStringLiteral("MoneyDefault")), QStringLiteral("Yes"));
        QCOMPARE(StoredPreference(QStringLiteral("Date")), QStringLiteral("2.2.2002"));
        QCOMPARE(StoredPreference(QStringLiteral("Money")), QStringLiteral("5"));
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("dd-mm-yyyy"));
    }

    void browseButton_data() {
        QTest::addColumn<std::optional<QString>>("chosen");
        QTest::addColumn<QString>("after");

        QTest::newRow("confirmed")
            << std::optional<QString>(QStringLiteral("/tmp/logs/new.log")) << "/tmp/logs/new.log";
        QTest::newRow("cancelled") << std::optional<QString>() << "typed.log";
    }

    void browseButton() {
        QFETCH(std::optional<QString>, chosen);
        QFETCH(QString, after);

        TPreferences dialog(nullptr, enGB);
        std::vector<ui::SaveFileRequest> requests;
        QWidget* parent = nullptr;
        dialog.setSaveFileChooser([&](QWidget* owner, const ui::SaveFileRequest& request) {
            parent = owner;
            requests.push_back(request);
            return chosen;
        });
        auto* logFile = control<QLineEdit>(dialog, "EditLogFile");
        logFile->setText(QStringLiteral("typed.log"));
        click(control<QPushButton>(dialog, "BtnBrowse"));

        QCOMPARE(requests.size(), size_t(1));
        QCOMPARE(parent, &dialog);
        QCOMPARE(requests[0].filter, QStringLiteral("Log Files|*.log|All Files|*.*"));
        QCOMPARE(requests[0].defaultExtension, QStringLiteral("log"));
        QCOMPARE(requests[0].fileName, QStringLiteral("typed.log"));
        QCOMPARE(logFile->text(), after);
        QVERIFY(StoredPreferenceNames().isEmpty());
    }

    void saveFileDialog_data() {
        QTest::addColumn<bool>("confirm");
        QTest::newRow("confirmed") << true;
        QTest::newRow("cancelled") << false;
    }

    // The toolkit's dialog behind the browse button.
    void saveFileDialog() {
        QFETCH(bool, confirm);

        QTemporaryDir folder;
        const ui::SaveFileRequest request{QStringLiteral("Log Files|*.log|All Files|*.*"),
                                          QStringLiteral("log"), folder.filePath("picked")};
        QStringList filters;
        QString suffix;
        QFileDialog::AcceptMode mode = QFileDialog::AcceptOpen;
        QStringList initial;
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            filters = dialog->nameFilters();
            suffix = dialog->defaultSuffix();
            mode = dialog->acceptMode();
            initial = dialog->selectedFiles();
            if (confirm)
                static_cast<QDialog*>(dialog)->accept(); // as the Save button does
            else
                dialog->reject();
        });
        const std::optional<QString> chosen = ui::ChooseSaveFile(nullptr, request);

        QCOMPARE(filters, QStringList({QStringLiteral("Log Files (*.log)"),
                                       QStringLiteral("All Files (*)")}));
        QCOMPARE(suffix, QStringLiteral("log"));
        QCOMPARE(mode, QFileDialog::AcceptSave);
        // The box's text, with the default extension the dialog adds.
        QCOMPARE(initial, QStringList(folder.filePath("picked.log")));
        if (confirm)
            QCOMPARE(chosen, std::optional<QString>(folder.filePath("picked.log")));
        else
            QVERIFY(!chosen);
    }

    void tabOrder() {
        TPreferences dialog(nullptr, enGB);
        const QStringList expected{"BtnBottom",       "BtnRight",       "RB_FormatDefault",
                                   "RB_FormatCustom", "EditFormat",     "CB_KeepLog",
                                   "EditLogFile",     "BtnBrowse",      "CB_HideID",
                                   "CB_AppendID",     "CB_SetDefault",  "CB_DateDefaults",
                                   "EditDateFields",  "CB_MoneyFields", "EditMoneyFields",
                                   "BtnOk",           "BtnCancel"};
        QStringList chain;
        QWidget* widget = control<QTabWidget>(dialog, "PageControl1");
        for (int guard = 0; guard < 200; ++guard) {
            widget = widget->nextInFocusChain();
            if (widget == control<QTabWidget>(dialog, "PageControl1"))
                break;
            if (expected.contains(widget->objectName()))
                chain << widget->objectName();
        }
        QCOMPARE(chain, expected);
    }

    void mnemonics_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("page");

        QTest::newRow("Alt+M") << int(Qt::Key_M) << 0;
        QTest::newRow("Alt+T") << int(Qt::Key_T) << 1;
        QTest::newRow("Alt+L") << int(Qt::Key_L) << 2;
        QTest::newRow("Alt+I") << int(Qt::Key_I) << 3;
        QTest::newRow("Alt+F") << int(Qt::Key_F) << 4;
    }

    void mnemonics() {
        QFETCH(int, key);
        QFETCH(int, page);

        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        if (!QTest::qWaitForWindowActive(&dialog))
            QSKIP("the platform does not activate windows");
        auto* pages = control<QTabWidget>(dialog, "PageControl1");
        pages->setCurrentIndex(page == 0 ? 2 : 0);
        QTest::keyClick(&dialog, Qt::Key(key), Qt::AltModifier);
        QCOMPARE(pages->currentIndex(), page);
    }

    void mnemonicsOfTheControls() {
        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        if (!QTest::qWaitForWindowActive(&dialog))
            QSKIP("the platform does not activate windows");
        auto* pages = control<QTabWidget>(dialog, "PageControl1");

        pages->setCurrentIndex(4);
        auto* setDefault = control<QCheckBox>(dialog, "CB_SetDefault");
        QTest::keyClick(&dialog, Qt::Key_S, Qt::AltModifier);
        QTRY_VERIFY(!setDefault->isChecked());
        QTest::keyClick(&dialog, Qt::Key_C, Qt::AltModifier);
        QTRY_VERIFY(!control<QCheckBox>(dialog, "CB_MoneyFields")->isChecked());

        pages->setCurrentIndex(1);
        QTest::keyClick(&dialog, Qt::Key_C, Qt::AltModifier);
        QTRY_VERIFY(control<QRadioButton>(dialog, "RB_FormatCustom")->isChecked());
        QTest::keyClick(&dialog, Qt::Key_D, Qt::AltModifier);
        QTRY_VERIFY(control<QRadioButton>(dialog, "RB_FormatDefault")->isChecked());
        // The Date fields box of the hidden page was not touched.
        QVERIFY(control<QCheckBox>(dialog, "CB_DateDefaults")->isChecked());

        pages->setCurrentIndex(3);
        QTest::keyClick(&dialog, Qt::Key_P, Qt::AltModifier);
        QTRY_VERIFY(!control<QCheckBox>(dialog, "CB_AppendID")->isChecked());
    }
};

QTEST_MAIN(TestPreferencesDialog)
#include "test_preferencesdialog.moc"
