// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — core's UI port answered by real Qt boxes and dialogs.
#include "gui/qtuiport.h"

#include <string>

#include <QAbstractButton>
#include <QClipboard>
#include <QCursor>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QUrl>

#include "guitestsupport.h"
#include "support/testsupport.h"

Q_DECLARE_METATYPE(dorvane::shell::Icon)
Q_DECLARE_METATYPE(dorvane::shell::Buttons)
Q_DECLARE_METATYPE(dorvane::shell::Answer)

namespace dorvane::test {

namespace {

class NamedModel final : public shell::DialogModel {
public:
    explicit NamedModel(std::string name) : m_name(std::move(name)) {}
    std::string_view dialogName() const override { return m_name; }
    int shown = 0;

private:
    std::string m_name;
};

// Receives the desktop's "open this file" requests instead of the desktop.
class DesktopRecorder : public QObject {
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls << url; }
};

Qt::CursorShape overrideShape() {
    const QCursor* cursor = QGuiApplication::overrideCursor();
    return cursor == nullptr ? Qt::BitmapCursor : cursor->shape();  // Bitmap: none set
}

}  // namespace

class QtUiPortTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup();

    void messageBoxShowsTextTitleIconAndButtons_data();
    void messageBoxShowsTextTitleIconAndButtons();
    void closedMessageBoxCountsAsTheSafeAnswer_data();
    void closedMessageBoxCountsAsTheSafeAnswer();
    void inputBoxAnswersTextOrNothing();
    void openFileDialogFiltersAndAnswersThePath();
    void openWithDesktopHandsOverAFileUrl();
    void clipboardTextIsRead();
    void busyPointerNestsAndGivesWayToBoxes();
    void yieldLetsWaitingEventsRun();
    void dialogsAreFoundByName();

private:
    gui::QtUiPort m_ui;
};

void QtUiPortTest::cleanup() {
    while (m_ui.busyDepth() > 0) {
        m_ui.setBusy(false);
    }
}

void QtUiPortTest::messageBoxShowsTextTitleIconAndButtons_data() {
    QTest::addColumn<shell::Icon>("icon");
    QTest::addColumn<shell::Buttons>("buttons");
    QTest::addColumn<int>("qtIcon");
    QTest::addColumn<int>("qtButtons");
    QTest::addColumn<int>("press");
    QTest::addColumn<shell::Answer>("answer");
    using B = QMessageBox;
    QTest::newRow("ok") << shell::Icon::None << shell::Buttons::Ok << int(B::NoIcon) << int(B::Ok)
                        << int(B::Ok) << shell::Answer::Ok;
    QTest::newRow("ok cancel: cancel")
        << shell::Icon::Information << shell::Buttons::OkCancel << int(B::Information)
        << int(B::Ok | B::Cancel) << int(B::Cancel) << shell::Answer::Cancel;
    QTest::newRow("yes no: no") << shell::Icon::Question << shell::Buttons::YesNo
                                << int(B::Question) << int(B::Yes | B::No) << int(B::No)
                                << shell::Answer::No;
    QTest::newRow("yes no cancel: yes")
        << shell::Icon::Exclamation << shell::Buttons::YesNoCancel << int(B::Warning)
        << int(B::Yes | B::No | B::Cancel) << int(B::Yes) << shell::Answer::Yes;
    QTest::newRow("retry cancel: retry")
        << shell::Icon::Critical << shell::Buttons::RetryCancel << int(B::Critical)
        << int(B::Retry | B::Cancel) << int(B::Retry) << shell::Answer::Retry;
}

void QtUiPortTest::messageBoxShowsTextTitleIconAndButtons() {
    QFETCH(shell::Icon, icon);
    QFETCH(shell::Buttons, buttons);
    QFETCH(int, qtIcon);
    QFETCH(int, qtButtons);
    QFETCH(int, press);
    QFETCH(shell::Answer, answer);

    QString title, text;
    int shownIcon = -1;
    int shownButtons = -1;
    whenModal<QMessageBox>([&](QMessageBox* box) {
        title = box->windowTitle();
        text = box->text();
        shownIcon = box->icon();
        shownButtons = int(box->standardButtons());
        QTest::mouseClick(box->button(QMessageBox::StandardButton(press)), Qt::LeftButton);
    });
    const shell::Answer got =
        m_ui.messageBox("Invoice 1042 <b>was</b> sent", "Dorvane", icon, buttons);

    QCOMPARE(got, answer);
    QCOMPARE(title, QStringLiteral("Dorvane"));
    QCOMPARE(text, QStringLiteral("Invoice 1042 <b>was</b> sent"));
    QCOMPARE(shownIcon, qtIcon);
    QCOMPARE(shownButtons, qtButtons);
}

void QtUiPortTest::closedMessageBoxCountsAsTheSafeAnswer_data() {
    QTest::addColumn<shell::Buttons>("buttons");
    QTest::addColumn<shell::Answer>("answer");
    QTest::newRow("ok") << shell::Buttons::Ok << shell::Answer::Ok;
    QTest::newRow("ok cancel") << shell::Buttons::OkCancel << shell::Answer::Cancel;
    QTest::newRow("yes no") << shell::Buttons::YesNo << shell::Answer::No;
    QTest::newRow("yes no cancel") << shell::Buttons::YesNoCancel << shell::Answer::Cancel;
    QTest::newRow("retry cancel") << shell::Buttons::RetryCancel << shell::Answer::Cancel;
}

void QtUiPortTest::closedMessageBoxCountsAsTheSafeAnswer() {
    QFETCH(shell::Buttons, buttons);
    QFETCH(shell::Answer, answer);
    whenModal<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
    QCOMPARE(m_ui.messageBox("Continue?", "Dorvane", shell::Icon::Question, buttons), answer);
}

void QtUiPortTest::inputBoxAnswersTextOrNothing() {
    QString prompt, title, preset;
    whenModal<QInputDialog>([&](QInputDialog* dialog) {
        prompt = dialog->labelText();
        title = dialog->windowTitle();
        preset = dialog->textValue();
        auto* edit = dialog->findChild<QLineEdit*>();
        edit->setText(QStringLiteral("Müller & Söhne"));  // key events carry ASCII only
        QTest::keyClick(edit, Qt::Key_Return);
    });
    const auto typed = m_ui.inputBox("Customer name", "New customer", "Mueller");
    QCOMPARE(prompt, QStringLiteral("Customer name"));
    QCOMPARE(title, QStringLiteral("New customer"));
    QCOMPARE(preset, QStringLiteral("Mueller"));
    QVERIFY(typed.has_value());
    QCOMPARE(QString::fromStdString(*typed), QStringLiteral("Müller & Söhne"));

    whenModal<QInputDialog>([](QInputDialog* dialog) { dialog->reject(); });
    QVERIFY(!m_ui.inputBox("Customer name", "New customer", "Mueller").has_value());
}

void QtUiPortTest::openFileDialogFiltersAndAnswersThePath() {
    TempDir dir;
    writeFile(dir / "march.dvx", "<InvoiceRet/>");
    const QString chosen = QString::fromStdString((dir / "march.dvx").string());

    QStringList filters;
    QString title;
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        filters = dialog->nameFilters();
        title = dialog->windowTitle();
        dialog->selectFile(chosen);
        static_cast<QDialog*>(dialog)->accept();  // as the Open button does
    });
    const auto path = m_ui.openFileDialog("Open exchange file", "Dorvane exchange file (*.dvx)");
    QCOMPARE(title, QStringLiteral("Open exchange file"));
    QCOMPARE(filters, QStringList{QStringLiteral("Dorvane exchange file (*.dvx)")});
    QVERIFY(path.has_value());
    QCOMPARE(QString::fromStdString(*path), chosen);

    QString startDirectory;
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
        startDirectory = dialog->directory().absolutePath();
        dialog->reject();
    });
    QVERIFY(!m_ui.openFileDialog("Open exchange file", "Dorvane exchange file (*.dvx)"));
    QCOMPARE(startDirectory, QString::fromStdString(dir.path().string()));
}

void QtUiPortTest::openWithDesktopHandsOverAFileUrl() {
    DesktopRecorder desktop;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &desktop, "open");
    m_ui.openWithDesktop("/opt/dorvane/Dorvane Help.htm");
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(desktop.urls.size(), 1);
    QVERIFY(desktop.urls[0].isLocalFile());
    QCOMPARE(desktop.urls[0].toLocalFile(), QStringLiteral("/opt/dorvane/Dorvane Help.htm"));
}

void QtUiPortTest::clipboardTextIsRead() {
    QGuiApplication::clipboard()->setText(
        QStringLiteral("Transaction ID: 2149186848\nAmount: $12.50"));
    QCOMPARE(m_ui.clipboardText(), std::string("Transaction ID: 2149186848\nAmount: $12.50"));
}

void QtUiPortTest::busyPointerNestsAndGivesWayToBoxes() {
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    m_ui.setBusy(true);
    m_ui.setBusy(true);
    QCOMPARE(overrideShape(), Qt::WaitCursor);

    Qt::CursorShape duringBox = Qt::BitmapCursor;
    whenModal<QMessageBox>([&](QMessageBox* box) {
        duringBox = overrideShape();
        box->accept();
    });
    (void)m_ui.messageBox("Could not send", "Dorvane", shell::Icon::Critical, shell::Buttons::Ok);
    QCOMPARE(duringBox, Qt::ArrowCursor);
    QCOMPARE(overrideShape(), Qt::WaitCursor);

    m_ui.setBusy(false);
    QCOMPARE(overrideShape(), Qt::WaitCursor);
    m_ui.setBusy(false);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    m_ui.setBusy(false);  // one too many does not pop someone else's pointer
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    QCOMPARE(m_ui.busyDepth(), 0);
}

// A long job calls yield between steps: timers that are due and posted events run there.
void QtUiPortTest::yieldLetsWaitingEventsRun() {
    bool timerRan = false;
    bool postedRan = false;
    QObject context;
    QTimer::singleShot(0, &context, [&timerRan] { timerRan = true; });
    QMetaObject::invokeMethod(
        &context, [&postedRan] { postedRan = true; }, Qt::QueuedConnection);
    m_ui.yield();
    QVERIFY(timerRan);
    QVERIFY(postedRan);
}

void QtUiPortTest::dialogsAreFoundByName() {
    QWidget owner;
    m_ui.setParentWidget(&owner);
    QWidget* parentSeen = nullptr;
    m_ui.registerDialog("Dialog2", [&parentSeen](QWidget* parent, shell::DialogModel& model) {
        parentSeen = parent;
        ++static_cast<NamedModel&>(model).shown;
        return true;
    });
    m_ui.registerDialog("Dialog3", [](QWidget*, shell::DialogModel&) { return false; });

    NamedModel company("Dialog2");
    NamedModel importPrefs("Dialog3");
    NamedModel unknown("Dialog9");
    QVERIFY(m_ui.runDialog(company));
    QCOMPARE(company.shown, 1);
    QCOMPARE(parentSeen, &owner);
    QVERIFY(!m_ui.runDialog(importPrefs));
    QVERIFY(!m_ui.runDialog(unknown));
    QVERIFY(!m_ui.hasDialog("Dialog9"));

    m_ui.registerDialog("Dialog2", [](QWidget*, shell::DialogModel&) { return false; });
    QVERIFY(!m_ui.runDialog(company));
    QCOMPARE(company.shown, 1);
    m_ui.setParentWidget(nullptr);
}

int runQtUiPortTests(int argc, char** argv) {
    QtUiPortTest suite;
    return QTest::qExec(&suite, argc, argv);
}

}  // namespace dorvane::test

#include "qtuiport_test.moc"
