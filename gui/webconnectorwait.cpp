// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/webconnectorwait.h"

#include <utility>

#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QWidget>

#include "gui/qtstrings.h"
#include "webconnector/service.h"

namespace dorvane::gui {

namespace {

// The hook comes about ten times a second while a wait lasts; this much without one means
// the wait is over.
constexpr int kIdleMilliseconds = 400;

}  // namespace

WebConnectorWait::WebConnectorWait(webconnector::Service& service,
                                   std::function<bool()> commandRunning, QObject* parent)
    : QObject(parent),
      m_service(service),
      m_previousHook(service.waitHook()),
      m_commandRunning(std::move(commandRunning)) {
    m_idle.setSingleShot(true);
    m_idle.setInterval(kIdleMilliseconds);
    connect(&m_idle, &QTimer::timeout, this, [this] {
        setShown(false);
        if (!m_commandRunning || !m_commandRunning()) {
            m_cancelled = false;
        }
    });
    m_service.setWaitHook(
        [this](const webconnector::WaitProgress& progress) { return onWait(progress); });
}

WebConnectorWait::~WebConnectorWait() {
    m_service.setWaitHook(std::move(m_previousHook));
}

void WebConnectorWait::addStatusBar(QStatusBar* bar) {
    Indicator indicator;
    indicator.label = new QLabel(bar);
    indicator.label->setObjectName(QStringLiteral("webConnectorWait"));
    indicator.label->setTextFormat(Qt::PlainText);
    indicator.label->hide();
    indicator.cancel = new QPushButton(QStringLiteral("Cancel"), bar);
    indicator.cancel->setObjectName(QStringLiteral("webConnectorCancel"));
    indicator.cancel->setToolTip(
        QStringLiteral("Stop waiting for the Web Connector; the command fails as when "
                       "QuickBooks cannot be started"));
    indicator.cancel->hide();
    bar->addPermanentWidget(indicator.label);
    bar->addPermanentWidget(indicator.cancel);
    // Not a command: it must work while the wait it stops has the command on the stack.
    connect(indicator.cancel, &QPushButton::clicked, this, &WebConnectorWait::cancel);
    m_indicators << indicator;
    if (m_shown) {
        indicator.label->show();
        indicator.cancel->show();
    }
}

void WebConnectorWait::commandEnded() {
    m_idle.stop();
    setShown(false);
    m_cancelled = false;
}

bool WebConnectorWait::onWait(const webconnector::WaitProgress& progress) {
    // A window closed during the wait ends it, as Cancel would: the program is on its way out.
    if (const auto* window = qobject_cast<const QWidget*>(parent());
        window != nullptr && !window->isVisible()) {
        m_cancelled = true;
    }
    if (m_cancelled) {
        return false;
    }
    const QString text = toQString(progress.text);
    const QString where = toQString(m_service.notice());
    for (const Indicator& indicator : std::as_const(m_indicators)) {
        if (indicator.label) {
            indicator.label->setText(text);
            indicator.label->setToolTip(where);
        }
    }
    setShown(true);
    m_idle.start();
    QCoreApplication::processEvents();
    if (const auto* window = qobject_cast<const QWidget*>(parent());
        window != nullptr && !window->isVisible()) {
        m_cancelled = true;
    }
    return !m_cancelled;
}

void WebConnectorWait::setShown(bool shown) {
    m_shown = shown;
    for (const Indicator& indicator : std::as_const(m_indicators)) {
        if (indicator.label) {
            indicator.label->setVisible(shown);
        }
        if (indicator.cancel) {
            indicator.cancel->setVisible(shown);
        }
    }
}

void WebConnectorWait::cancel() {
    m_cancelled = true;
    setShown(false);
}

}  // namespace dorvane::gui
