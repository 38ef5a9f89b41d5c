// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — answering modal boxes, and a QuickBooks that is never there.
#pragma once

#include <functional>
#include <memory>

#include <QApplication>
#include <QByteArray>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>
#include <QWidget>

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

// For its life, answers every message box that comes up with its default button and
// records the box's text and the objectName of the widget it was shown over. `look` runs on
// each box before it is answered.
class MessageBoxRecorder {
public:
    explicit MessageBoxRecorder(std::function<void(QMessageBox*)> look = {}) {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this, look] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                box && box->isVisible()) {
                if (look) {
                    look(box);
                }
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

// Sets an environment variable for the life of the object.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const QByteArray& value)
        : m_name(name), m_had(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name)) {
        qputenv(name, value);
    }
    ~ScopedEnv() {
        if (m_had) {
            qputenv(m_name, m_before);
        } else {
            qunsetenv(m_name);
        }
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* m_name;
    bool m_had;
    QByteArray m_before;
};

// Set DORVANE_SCREENSHOTS=<folder> to look at the windows as a person sees them: the
// screenshot tests save <folder>/<window name>.png. Empty when not asked for.
inline QString screenshotFile(const QString& windowName) {
    const QString folder = qEnvironmentVariable("DORVANE_SCREENSHOTS");
    return folder.isEmpty() ? QString()
                            : folder + QStringLiteral("/") + windowName + QStringLiteral(".png");
}

// The suites; main.cpp runs them all.
int runForm3Tests(int argc, char** argv);
int runQtUiPortTests(int argc, char** argv);
int runPreferencesDialogTests(int argc, char** argv);
int runCompanyDialogTests(int argc, char** argv);

}  // namespace dorvane::test
