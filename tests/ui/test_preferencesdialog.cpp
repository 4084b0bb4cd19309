#include "core/dateformat.h"
#include "core/ui/messages.h"
#include "core/ui/preferences.h"
#include "support/preferencestore.h"
#include "support/testsupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;
using testsupport::PrintedBy;
using testsupport::StoredPreferences;
using testsupport::StorePreferences;
using ui::TPreferences;

namespace {

const QLocale enGB(u"en_GB"_s);

// The controls in their tab order.
const QStringList Controls =
    u"BtnBottom BtnRight RB_FormatDefault RB_FormatCustom EditFormat CB_KeepLog EditLogFile "
    u"BtnBrowse CB_HideID CB_AppendID CB_SetDefault CB_DateDefaults EditDateFields "
    u"CB_MoneyFields EditMoneyFields BtnOk BtnCancel"_s.split(u' ');

template <typename Widget = QWidget> Widget* control(const QWidget& dialog, const QString& name) {
    auto* widget = dialog.findChild<Widget*>(name);
    if (!widget)
        qFatal("no control %s", qPrintable(name));
    return widget;
}

// The value of each control that has one, in tab order: "on"/"off" or the text of a box.
QString state(const TPreferences& dialog) {
    QStringList values;
    for (const QString& name : Controls) {
        if (auto* edit = qobject_cast<QLineEdit*>(control(dialog, name)))
            values << edit->text();
        else if (auto* button = control<QAbstractButton>(dialog, name); button->isCheckable())
            values << (button->isChecked() ? u"on"_s : u"off"_s);
    }
    return values.join(u' ');
}

// A click on the box or the circle of a check box or radio button, or on a button.
void click(QAbstractButton* button) {
    const bool box = qobject_cast<QCheckBox*>(button) || qobject_cast<QRadioButton*>(button);
    QTest::mouseClick(button, Qt::LeftButton, {},
                      box ? QPoint(6, button->height() / 2) : button->rect().center());
}

void replaceText(QLineEdit* edit, const QString& text) {
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

} // namespace

class TestPreferencesDialog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
    }
    void init() {
        QSettings(u"Marrowby"_s, u"Quillet"_s).clear();
        core::ApplyDateFormat(QString(), enGB);
    }

    // The controls over their own defaults or the stored values, always with 1 January
    // 1990 as the default date in the format in force, whatever "Date" holds; the default
    // format shown is the locale's. Stored words count only as written exactly. On the first
    // page, in tab order; opening writes nothing.
    void opens_data() {
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("custom"); // the date format in force; empty: the locale's
        QTest::addColumn<QString>("shown");
        QTest::newRow("own defaults")
            << u"Date=24.12.2012"_s << QString()
            << u"on off on off dd-mm-yyyy off quillet.log on on on on 01.01.90 on 0"_s;
        QTest::newRow("stored, custom format in force")
            << u"EditLayout=bottom;DateFormat=default;DateFormatString=yyyy.mm.dd;KeepLog=Yes;"
               u"LogFile=/var/q.log;HideID=No;AppendID=yes;Defaults=No;DateDefault=Yes;"
               u"MoneyDefault=;Date=3.3.2003;Money=12,5"_s
            << u"d-m-yyy"_s
            << u"off on off on yyyy.mm.dd on /var/q.log off off off on 1-1-1990 off 12,5"_s;
    }
    void opens() {
        QFETCH(QString, values);
        QFETCH(QString, custom);
        const QLocale german(u"de_DE"_s);
        StorePreferences(values);
        core::ApplyDateFormat(custom, german);
        const QStringList before = StoredPreferences();
        TPreferences dialog(nullptr, german);
        QTEST(state(dialog), "shown");
        QCOMPARE(control<QLabel>(dialog, u"DefaultDateFormat"_s)->text(), u"dd.mm.yy"_s);
        QCOMPARE(control<QTabWidget>(dialog, u"PageControl1"_s)->currentIndex(), 0);
        QCOMPARE(StoredPreferences(), before);
        QCOMPARE(dialog.windowTitle(), u"Preferences"_s);
        QCOMPARE(dialog.property("helpContext").toInt(), 600);
        QVERIFY(control<QPushButton>(dialog, u"BtnOk"_s)->isDefault());
        QCOMPARE(control<QPushButton>(dialog, u"BtnOk"_s)->text(), u"OK"_s);
        QCOMPARE(control<QPushButton>(dialog, u"BtnCancel"_s)->text(), u"Cancel"_s);
        QWidget* pages = control(dialog, u"PageControl1"_s);
        QStringList chain;
        for (QWidget* widget = pages->nextInFocusChain(); widget != pages && chain.size() < 99;
             widget = widget->nextInFocusChain())
            if (Controls.contains(widget->objectName()))
                chain << widget->objectName();
        QCOMPARE(chain, Controls);
    }

    // Each page: its title, its buttons with their captions, and its notes.
    void pages_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<QString>("notes");
        const QString sql = u"Select Execute SQL from the Query Menu to display your changes"_s;
        QTest::newRow("layout") << 0 << u"&Main window layout"_s
                                << u"BtnBottom=Bottom|BtnRight=Right"_s << QString();
        QTest::newRow("date format")
            << 1 << u"Da&te display format"_s
            << u"RB_FormatDefault=&Default format|RB_FormatCustom=&Custom"_s
            << u"The date format should only use the date separator character and the  m, mm, "
               u"d, dd, yy, and yyyy format specifiers.|"_s +
                   sql;
        QTest::newRow("log file") << 2 << u"&Log file"_s
                                  << u"CB_KeepLog=&Save error log as:|BtnBrowse=[...]"_s
                                  << QString();
        QTest::newRow("ID column") << 3 << u"Assets &ID column"_s
                                   << u"CB_HideID=&Hide the ID column in the Main window|"
                                      u"CB_AppendID=A&ppend the ID column to the SQL code"_s
                                   << sql;
        QTest::newRow("defaults") << 4 << u"De&faults"_s
                                  << u"CB_SetDefault=&Set default values:|CB_DateDefaults=&Date "
                                     u"fields|CB_MoneyFields=&Currency fields"_s
                                  << QString();
    }
    void pages() {
        QFETCH(int, page);
        QFETCH(QString, buttons);
        QFETCH(QString, notes);
        TPreferences dialog(nullptr, enGB);
        auto* pages = control<QTabWidget>(dialog, u"PageControl1"_s);
        QCOMPARE(pages->count(), 5);
        QTEST(pages->tabText(page), "title");
        for (const QString& pair : buttons.split(u'|')) {
            const QString name = pair.section(u'=', 0, 0);
            QCOMPARE(name + u'=' + control<QAbstractButton>(*pages->widget(page), name)->text(),
                     pair);
        }
        QStringList labels;
        for (const QLabel* label : pages->widget(page)->findChildren<QLabel*>())
            labels << label->text();
        for (const QString& note : notes.split(u'|', Qt::SkipEmptyParts))
            QVERIFY2(labels.contains(note), qPrintable(note));
    }

    // Every control changed with mouse and keyboard, page by page, over a stored "Date"
    // and "Money". OK and Enter save them all in order and apply the date format; a
    // default date that is no date is reported and leaves "Date" and "Money" unsaved, the
    // dialog closing all the same. Cancel and Escape save nothing.
    void closing_data() {
        QTest::addColumn<QString>("date");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<QString>("dateAndMoney");
        QTest::addColumn<QString>("printed");
        const QString typed = u"24.12.2001"_s, kept = u"Date=2.2.2002 Money=5"_s;
        QTest::newRow("BtnOk") << typed << true << u"Date=2001.12.24 Money=7,5"_s << QString();
        QTest::newRow("Return") << typed << true << u"Date=2001.12.24 Money=7,5"_s << QString();
        QTest::newRow("BtnCancel") << typed << false << kept << QString();
        QTest::newRow("Escape") << typed << false << kept << QString();
        QTest::newRow("BtnOk, no date")
            << u"31.02.1990"_s << true << kept << u"Error: Default Date Error\n"_s;
    }
    void closing() {
        QFETCH(QString, date);
        QFETCH(bool, saved);
        QFETCH(QString, dateAndMoney);
        QFETCH(QString, printed);
        const QString how = QString::fromLatin1(QTest::currentDataTag()).section(u',', 0, 0);
        StorePreferences(u"Date=2.2.2002;Money=5"_s);
        TPreferences dialog(nullptr, enGB);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QTabBar* tabs = control<QTabWidget>(dialog, u"PageControl1"_s)->tabBar();
        auto clickTab = [tabs](int index) {
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
            QCOMPARE(tabs->currentIndex(), index);
        };
        click(control<QToolButton>(dialog, u"BtnRight"_s));
        clickTab(1);
        click(control<QRadioButton>(dialog, u"RB_FormatCustom"_s));
        replaceText(control<QLineEdit>(dialog, u"EditFormat"_s), u"yyyy.mm.dd"_s);
        clickTab(2);
        click(control<QCheckBox>(dialog, u"CB_KeepLog"_s));
        replaceText(control<QLineEdit>(dialog, u"EditLogFile"_s), u"/tmp/chosen.log"_s);
        clickTab(3);
        click(control<QCheckBox>(dialog, u"CB_HideID"_s));
        clickTab(4);
        click(control<QCheckBox>(dialog, u"CB_MoneyFields"_s));
        replaceText(control<QLineEdit>(dialog, u"EditDateFields"_s), date);
        auto* money = control<QLineEdit>(dialog, u"EditMoneyFields"_s);
        replaceText(money, u"7,5"_s);

        QCOMPARE(PrintedBy([&] {
                     if (how.startsWith(u"Btn"))
                         click(control<QPushButton>(dialog, how));
                     else
                         QTest::keyClick(money,
                                         how == u"Return"_s ? Qt::Key_Return : Qt::Key_Escape);
                 }),
                 printed);
        QCOMPARE(ui::ErrorWasShown(), !printed.isEmpty());
        QCOMPARE(dialog.result(), int(saved ? QDialog::Accepted : QDialog::Rejected));
        QVERIFY(!dialog.isVisible());
        QStringList expected = dateAndMoney.split(u' ');
        if (saved)
            expected
                << u"AppendID=Yes DateDefault=Yes DateFormat=Custom DateFormatString=yyyy.mm.dd "
                   u"Defaults=Yes EditLayout=Right HideID=No KeepLog=Yes "
                   u"LogFile=/tmp/chosen.log MoneyDefault=No"_s.split(u' ');
        expected.sort();
        QCOMPARE(StoredPreferences(), expected);
        QCOMPARE(core::ShortDateFormat(), saved ? u"yyyy.mm.dd"_s : u"dd/mm/yyyy"_s);
        QCOMPARE(core::DateSeparator(), QChar(saved ? u'.' : u'/'));
    }

    // The browse button's save-file dialog: its filters, default extension and first
    // name; the log file box takes the name confirmed.
    void browseButton_data() {
        QTest::addColumn<bool>("confirm");
        QTest::newRow("confirmed") << true;
        QTest::newRow("cancelled") << false;
    }
    void browseButton() {
        QFETCH(bool, confirm);
        QTemporaryDir folder;
        TPreferences dialog(nullptr, enGB);
        auto* logFile = control<QLineEdit>(dialog, u"EditLogFile"_s);
        logFile->setText(folder.filePath(u"picked"_s));
        QStringList filters, initial;
        QString suffix;
        bool saving = false, owned = false;
        QTimer::singleShot(0, this, [&] {
            auto* box = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!box)
                return;
            filters = box->nameFilters();
            initial = box->selectedFiles();
            suffix = box->defaultSuffix();
            saving = box->acceptMode() == QFileDialog::AcceptSave;
            owned = box->parentWidget() == &dialog;
            confirm ? static_cast<QDialog*>(box)->accept() : box->reject();
        });
        click(control<QPushButton>(dialog, u"BtnBrowse"_s));
        QCOMPARE(filters, QStringList({u"Log Files (*.log)"_s, u"All Files (*)"_s}));
        QCOMPARE(suffix, u"log"_s);
        QVERIFY(saving && owned);
        // The box's text, with the default extension the dialog adds.
        QCOMPARE(initial, QStringList(folder.filePath(u"picked.log"_s)));
        QCOMPARE(logFile->text(), folder.filePath(confirm ? u"picked.log"_s : u"picked"_s));
        QVERIFY(StoredPreferences().isEmpty());
    }
};

QTEST_MAIN(TestPreferencesDialog)
#include "test_preferencesdialog.moc"
