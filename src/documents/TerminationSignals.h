#pragma once

#include <QObject>

class QSocketNotifier;

// SIGTERM, SIGHUP and SIGINT (a logout, a shutdown, Ctrl+C in a terminal) arrive as a signal on
// the main thread, through a pipe written by the handler, so that the application can keep its
// work before it ends. A second one while the first is handled ends the process at once.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

signals:
    void received(int signalNumber);

private:
    void readPipe();

    QSocketNotifier* m_notifier = nullptr;
};
