// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the wait for the Web Connector, shown in the windows' status bars.
//
// With QuickBooks reached through the Web Connector a request waits until the Web Connector
// on the office PC polls for it, which may take its scheduled minute or never happen. While
// one waits, each status bar given here shows what is awaited (`webConnectorWait`) and a
// Cancel (`webConnectorCancel`); the event loop runs, so the windows stay responsive. Cancel
// stops the wait under way and every further one of the same command, which then fails as
// when QuickBooks cannot be started. Closing the window given as parent does the same. Both
// hide as soon as the waits stop.
#pragma once

#include <functional>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include "webconnector/bridge.h"

class QLabel;
class QPushButton;
class QStatusBar;

namespace dorvane::webconnector {
class Service;
}

namespace dorvane::gui {

class WebConnectorWait final : public QObject {
    Q_OBJECT

public:
    // Installs itself as the service's wait hook (and puts the previous one back when
    // destroyed). `commandRunning` tells whether a command is under way: a Cancel holds until
    // that command ends.
    WebConnectorWait(webconnector::Service& service, std::function<bool()> commandRunning,
                     QObject* parent = nullptr);
    ~WebConnectorWait() override;

    // Adds the label and the Cancel to `bar`, hidden until a wait starts.
    void addStatusBar(QStatusBar* bar);
    // The command under way ended: the indicator goes and the next wait starts afresh.
    void commandEnded();

    bool cancelled() const { return m_cancelled; }

private:
    bool onWait(const webconnector::WaitProgress& progress);
    void setShown(bool shown);
    void cancel();

    struct Indicator {
        QPointer<QLabel> label;
        QPointer<QPushButton> cancel;
    };

    webconnector::Service& m_service;
    webconnector::WaitHook m_previousHook;
    std::function<bool()> m_commandRunning;
    QList<Indicator> m_indicators;
    QTimer m_idle;  // hides the indicator once the waits stop
    bool m_cancelled = false;
    bool m_shown = false;
};

}  // namespace dorvane::gui
