// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — the company information editor `Dialog2` and the menu entries around it.
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include "company/companyeditor.h"
#include "gui/dialogs.h"
#include "gui/mainwindowview.h"
#include "gui/qtuiport.h"
#include "guitestsupport.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

namespace {

constexpr const char* kCompanyFile = "C:\\Books\\Harbour Light.qbw";

// The legal address still holds an old address: OK makes it the address again.
constexpr const char* kRecord = R"(<CompanyInfo>
  <CompanyRet>
    <FileName>C:\Books\Harbour Light.qbw</FileName>
    <CompanyName>Harbour Light Supplies</CompanyName>
    <LegalCompanyName>Harbour Light Supplies (old)</LegalCompanyName>
    <Address>
      <Addr1>12 Harbour Road</Addr1>
      <Addr2>Unit 4</Addr2>
      <City>Portland</City>
      <State>ME</State>
      <PostalCode>04101</PostalCode>
      <Country>US</Country>
    </Address>
    <LegalAddress>
      <Addr1>1 Old Wharf</Addr1>
      <Addr2></Addr2>
      <City>Bath</City>
      <State>ME</State>
      <PostalCode>04530</PostalCode>
      <Country>US</Country>
    </LegalAddress>
    <Phone>207-555-0100</Phone>
    <Fax>207-555-0101</Fax>
    <Email>office@harbourlight.example</Email>
    <CompanyWebSite>www.harbourlight.example</CompanyWebSite>
  </CompanyRet>
</CompanyInfo>)";

// Each box and the record value it opens with.
constexpr std::pair<const char*, const char*> kShown[] = {
    {"CompanyName", "Harbour Light Supplies"},
    {"Addr1", "12 Harbour Road"},
    {"Addr2", "Unit 4"},
    {"City", "Portland"},
    {"State", "ME"},
    {"Zip", "04101"},
    {"Country", "US"},
    {"Phone", "207-555-0100"},
    {"Fax", "207-555-0101"},
    {"Email", "office@harbourlight.example"},
    {"Website", "www.harbourlight.example"},
};

constexpr const char* kAddressParts[] = {"Addr1", "Addr2",      "City",
                                         "State", "PostalCode", "Country"};

QLabel* labelOf(QWidget* dialog, QWidget* buddy) {
    for (QLabel* label : dialog->findChildren<QLabel*>()) {
        if (label->buddy() == buddy) {
            return label;
        }
    }
    return nullptr;
}

QRect globalRect(const QWidget* widget) {
    return {widget->mapToGlobal(QPoint(0, 0)), widget->size()};
}

void typeInto(QLineEdit* edit, const QString& text) {
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

QLineEdit* box(QDialog* dialog, const QString& name) {
    return dialog->findChild<QLineEdit*>(name);
}

void press(QDialog* dialog, const char* button) {
    QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromUtf8(button)), Qt::LeftButton);
}

}  // namespace

class CompanyDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void controlsCarryTheirNamesAndLabels();
    void opensWithTheRecord();
    void okWritesNameAndAddressIntoBothPlaces();
    void optionalFieldMayStayEmpty_data();
    void optionalFieldMayStayEmpty();
    void requiredFieldKeepsDialogOpen_data();
    void requiredFieldKeepsDialogOpen();
    void cancelLeavesTheRecordAlone();
    void editMenuStoresTheRecordOfTheOpenCompanyFile();
    void getCompanyInfoWithoutQuickBooksSaysSo();
    void screenshot();

private:
    xml::Node record() const { return m_document.selectOne("/CompanyInfo/CompanyRet"); }
    // Opens the editor on the record through the UI port; `person` acts on it.
    bool openDialog(const std::function<void(QDialog*)>& person);

    std::unique_ptr<TempDir> m_dir;
    std::unique_ptr<gui::QtUiPort> m_ui;
    std::unique_ptr<shell::SettingsStore> m_store;
    xml::Document m_document;
};

void CompanyDialogTest::init() {
    m_dir = std::make_unique<TempDir>();
    m_ui = std::make_unique<gui::QtUiPort>();
    m_store = std::make_unique<shell::SettingsStore>(m_dir->path() / "DV01.ini");
    gui::registerDialogs(*m_ui, *m_store);
    auto parsed = xml::Document::parse(kRecord);
    QVERIFY(parsed);
    m_document = std::move(*parsed);
}

void CompanyDialogTest::cleanup() {
    m_ui.reset();
    m_store.reset();
    m_dir.reset();
}

bool CompanyDialogTest::openDialog(const std::function<void(QDialog*)>& person) {
    whenModal<QDialog>([person](QDialog* dialog) {
        person(dialog);
        if (dialog->isVisible()) {  // a failed check left it open
            dialog->reject();
        }
    });
    company::CompanyEditorModel model(*m_ui, record(), kCompanyFile);
    return m_ui->runDialog(model);
}

void CompanyDialogTest::controlsCarryTheirNamesAndLabels() {
    openDialog([](QDialog* dialog) {
        QCOMPARE(dialog->objectName(), QStringLiteral("Dialog2"));
        const std::pair<const char*, const char*> labelled[] = {
            {"CompanyName", "Company Name"},
            {"Addr1", "Address"},
            {"City", "City / State / Zip"},
            {"Country", "Country"},
            {"Phone", "Phone"},
            {"Fax", "Fax"},
            {"Email", "Email"},
            {"Website", "Website"},
        };
        for (const auto& [name, caption] : labelled) {
            QLineEdit* edit = box(dialog, QString::fromUtf8(name));
            QVERIFY2(edit && edit->isVisible(), name);
            QLabel* label = labelOf(dialog, edit);
            QVERIFY2(label && label->isVisible(), name);
            QCOMPARE(label->text(), QString::fromUtf8(caption));
            QVERIFY(globalRect(label).right() < globalRect(edit).left());
        }
        for (const char* name : {"Addr2", "State", "Zip"}) {
            QLineEdit* edit = box(dialog, QString::fromUtf8(name));
            QVERIFY2(edit && edit->isVisible(), name);
            QVERIFY2(!labelOf(dialog, edit), name);
        }

        // City, State and Zip share one row, in that order; the second address line sits
        // under the first, above the city.
        const QRect city = globalRect(box(dialog, QStringLiteral("City")));
        const QRect state = globalRect(box(dialog, QStringLiteral("State")));
        const QRect zip = globalRect(box(dialog, QStringLiteral("Zip")));
        QCOMPARE(state.center().y(), city.center().y());
        QCOMPARE(zip.center().y(), city.center().y());
        QVERIFY(city.right() < state.left());
        QVERIFY(state.right() < zip.left());
        const QRect addr1 = globalRect(box(dialog, QStringLiteral("Addr1")));
        const QRect addr2 = globalRect(box(dialog, QStringLiteral("Addr2")));
        QCOMPARE(addr2.left(), addr1.left());
        QVERIFY(addr1.bottom() < addr2.top());
        QVERIFY(addr2.bottom() < city.top());

        auto* ok = dialog->findChild<QPushButton*>(QStringLiteral("OKButton"));
        auto* cancel = dialog->findChild<QPushButton*>(QStringLiteral("CancelButton"));
        QVERIFY(ok && cancel);
        QCOMPARE(ok->text(), QStringLiteral("OK"));
        QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
        dialog->reject();
    });
}

void CompanyDialogTest::opensWithTheRecord() {
    openDialog([](QDialog* dialog) {
        for (const auto& [name, value] : kShown) {
            QCOMPARE(box(dialog, QString::fromUtf8(name))->text(), QString::fromUtf8(value));
        }
        dialog->reject();
    });
}

void CompanyDialogTest::okWritesNameAndAddressIntoBothPlaces() {
    const bool accepted = openDialog([](QDialog* dialog) {
        typeInto(box(dialog, QStringLiteral("CompanyName")), QStringLiteral("Harbour Light Ltd"));
        typeInto(box(dialog, QStringLiteral("City")), QStringLiteral("Bangor"));
        typeInto(box(dialog, QStringLiteral("Zip")), QStringLiteral("04401"));
        typeInto(box(dialog, QStringLiteral("Website")), QStringLiteral("harbourlight.example"));
        press(dialog, "OKButton");
    });

    QVERIFY(accepted);
    const xml::Node r = record();
    QCOMPARE(r.valueOf("FileName"), std::string(kCompanyFile));
    QCOMPARE(r.valueOf("CompanyName"), std::string("Harbour Light Ltd"));
    QCOMPARE(r.valueOf("LegalCompanyName"), std::string("Harbour Light Ltd"));
    QCOMPARE(r.valueOf("Address/City"), std::string("Bangor"));
    QCOMPARE(r.valueOf("Address/PostalCode"), std::string("04401"));
    for (const char* part : kAddressParts) {
        QCOMPARE(r.valueOf(std::string("LegalAddress/") + part),
                 r.valueOf(std::string("Address/") + part));
    }
    QCOMPARE(r.valueOf("Phone"), std::string("207-555-0100"));
    QCOMPARE(r.valueOf("CompanyWebSite"), std::string("harbourlight.example"));
}

void CompanyDialogTest::optionalFieldMayStayEmpty_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("field");
    QTest::newRow("Addr2") << "Addr2"
                           << "Address/Addr2";
    QTest::newRow("Fax") << "Fax"
                         << "Fax";
    QTest::newRow("Website") << "Website"
                             << "CompanyWebSite";
}

void CompanyDialogTest::optionalFieldMayStayEmpty() {
    QFETCH(QString, control);
    QFETCH(QString, field);
    MessageBoxRecorder boxes;
    const bool accepted = openDialog([&control](QDialog* dialog) {
        typeInto(box(dialog, control), QString());
        press(dialog, "OKButton");
    });
    QVERIFY(accepted);
    QCOMPARE(boxes.texts, QStringList());
    QCOMPARE(record().valueOf(field.toStdString()), std::string());
    QCOMPARE(record().valueOf("FileName"), std::string(kCompanyFile));
}

void CompanyDialogTest::requiredFieldKeepsDialogOpen_data() {
    QTest::addColumn<QString>("control");
    for (const char* name :
         {"CompanyName", "Addr1", "City", "State", "Zip", "Country", "Phone", "Email"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void CompanyDialogTest::requiredFieldKeepsDialogOpen() {
    QFETCH(QString, control);
    const std::string before = record().xml();
    MessageBoxRecorder boxes;
    bool stayedOpen = false;
    std::string afterRefusal;
    const bool accepted = openDialog([&](QDialog* dialog) {
        typeInto(box(dialog, control), QString());
        typeInto(box(dialog, QStringLiteral("Fax")), QStringLiteral("207-555-0199"));
        press(dialog, "OKButton");
        stayedOpen = dialog->isVisible();
        afterRefusal = record().xml();
        typeInto(box(dialog, control), QStringLiteral("filled in"));
        press(dialog, "OKButton");
    });

    QCOMPARE(boxes.texts, QStringList{QStringLiteral("All fields are required !")});
    QCOMPARE(boxes.owners[0], QStringLiteral("Dialog2"));
    QVERIFY(stayedOpen);
    QCOMPARE(afterRefusal, before);
    QVERIFY(accepted);
    QCOMPARE(record().valueOf("Fax"), std::string("207-555-0199"));
}

void CompanyDialogTest::cancelLeavesTheRecordAlone() {
    const std::string before = record().xml();
    const bool accepted = openDialog([](QDialog* dialog) {
        typeInto(box(dialog, QStringLiteral("Phone")), QStringLiteral("000"));
        typeInto(box(dialog, QStringLiteral("Email")), QString());
        press(dialog, "CancelButton");
    });
    QVERIFY(!accepted);
    QCOMPARE(record().xml(), before);
}

// Preferences > Edit Company Info edits the record of the open company file inside
// "companyinfo.xml" and saves the file. Without QuickBooks the open company file is unknown
// (empty), so the record kept for an empty file name is the one edited.
void CompanyDialogTest::editMenuStoresTheRecordOfTheOpenCompanyFile() {
    TempDir home;
    std::string file = readFile(programSource() / "companyinfo.xml");
    std::string kept = kRecord;
    kept = kept.substr(kept.find("<CompanyRet>"));
    kept = kept.substr(0, kept.find("</CompanyInfo>"));
    kept.replace(kept.find(R"(C:\Books\Harbour Light.qbw)"), std::strlen(kCompanyFile), "");
    file.insert(file.find("</CompanyInfo>"), kept);
    writeFile(home / "companyinfo.xml", file);

    shell::Application app(*m_ui, shell::StartOptions{home.path().string()}, noQuickBooks());
    gui::MainWindowView view(app);
    m_ui->setParentWidget(&view);
    view.show();

    QString shownPhone;
    whenModal<QDialog>([&shownPhone](QDialog* dialog) {
        shownPhone = box(dialog, QStringLiteral("Phone"))->text();
        typeInto(box(dialog, QStringLiteral("Phone")), QStringLiteral("207-555-0142"));
        press(dialog, "OKButton");
    });
    view.findChild<QAction*>(QStringLiteral("editcompanyinfo"))->trigger();
    m_ui->setParentWidget(nullptr);

    QCOMPARE(shownPhone, QStringLiteral("207-555-0100"));
    auto saved = xml::Document::load(home / "companyinfo.xml");
    QVERIFY(saved);
    const auto records = saved->selectAll("/CompanyInfo/CompanyRet");
    QCOMPARE(records.size(), std::size_t{2});
    QCOMPARE(records[0].valueOf("FileName"), std::string("(template for new records)"));
    QCOMPARE(records[0].valueOf("Phone"), std::string());
    QCOMPARE(records[1].valueOf("FileName"), std::string());
    QCOMPARE(records[1].valueOf("Phone"), std::string("207-555-0142"));
    QCOMPARE(records[1].valueOf("LegalAddress/City"), std::string("Portland"));
}

// Preferences > Get Company Info asks QuickBooks again; the edit entry is off meanwhile.
void CompanyDialogTest::getCompanyInfoWithoutQuickBooksSaysSo() {
    TempDir home;
    shell::Application app(*m_ui, shell::StartOptions{home.path().string()}, noQuickBooks());
    gui::MainWindowView view(app);
    m_ui->setParentWidget(&view);
    view.show();
    QAction* edit = view.findChild<QAction*>(QStringLiteral("editcompanyinfo"));

    QList<bool> editEnabledMeanwhile;
    MessageBoxRecorder boxes([&](QMessageBox*) { editEnabledMeanwhile << edit->isEnabled(); });
    view.findChild<QAction*>(QStringLiteral("Company"))->trigger();
    m_ui->setParentWidget(nullptr);

    // The gateway's own failure box comes first.
    QVERIFY(!boxes.texts.isEmpty());
    QCOMPARE(boxes.texts.back(), QStringLiteral("Could not access Quickbooks"));
    QVERIFY(!editEnabledMeanwhile.contains(true));
    QVERIFY(edit->isEnabled());
    QCOMPARE(view.findChild<QLabel*>(QStringLiteral("StatusBar1Panel1"))->text(),
             QStringLiteral("Could not access Quickbooks"));
}

void CompanyDialogTest::screenshot() {
    const QString file = screenshotFile(QStringLiteral("Dialog2"));
    if (file.isEmpty()) {
        QSKIP("DORVANE_SCREENSHOTS not set");
    }
    openDialog([&file](QDialog* dialog) {
        QTest::qWait(50);
        QVERIFY(dialog->grab().save(file));
        dialog->reject();
    });
}

int runCompanyDialogTests(int argc, char** argv) {
    CompanyDialogTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "company_dialog_test.moc"
