// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — answering modal boxes, and a QuickBooks that is never there.
#pragma once

#include <functional>
#include <memory>

#include <QApplication>
#include <QElapsedTimer>
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

// The suites; main.cpp runs them all.
int runForm3Tests(int argc, char** argv);
int runQtUiPortTests(int argc, char** argv);

}  // namespace dorvane::test
