// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — answering modal boxes, acting as a person, a QuickBooks never there.
#pragma once

#include <functional>
#include <memory>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTimer>

#include "qbgateway/requestprocessor.h"

namespace dorvane::test {

// Each request fails as if QuickBooks could not be started.
inline qbgateway::ProcessorFactory noQuickBooks() {
    return []() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
        return qbgateway::processorError(qbgateway::kErrCouldNotStart, "QuickBooks is not here");
    };
}

// Runs `answer` on the next modal widget of type T once it is shown (polled from the event
// loop the modal box runs). A box that never comes leaves the test to its ctest timeout.
template <class T>
void whenModal(std::function<void(T*)> answer) {
    auto* timer = new QTimer(qApp);
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer] {
        if (auto* widget = qobject_cast<T*>(QApplication::activeModalWidget());
            widget && widget->isVisible()) {
            timer->stop();
            timer->deleteLater();
            answer(widget);
        }
    });
    timer->start();
}

// For its life, accepts every message box that comes up, recording its text and the
// objectName of the widget it was shown over.
class MessageBoxRecorder {
public:
    MessageBoxRecorder() {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                box && box->isVisible()) {
                texts << box->text();
                owners << (box->parentWidget() ? box->parentWidget()->objectName() : QString());
                box->accept();
            }
        });
        m_timer.start();
    }
    QStringList texts;
    QStringList owners;

private:
    QTimer m_timer;
};

// ---- acting on a dialog as a person does ---------------------------------------------------

inline void typeInto(QLineEdit* edit, const QString& text) {
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

// Clicks a check box or option button on its indicator.
inline void tick(QAbstractButton* button) {
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

inline void press(QWidget* dialog, const char* button) {
    QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromUtf8(button)), Qt::LeftButton);
}

// The suites; main.cpp runs them all.
int runForm3Tests(int argc, char** argv);
int runQtUiPortTests(int argc, char** argv);
int runRemindersWindowTests(int argc, char** argv);
int runHistoryWindowTests(int argc, char** argv);

}  // namespace dorvane::test
