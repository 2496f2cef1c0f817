#include "PerformanceLog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QThread>

#include <cstdlib>

namespace performanceLog {

namespace {

class TraceWriter {
public:
    TraceWriter()
    {
        const QByteArray path = qgetenv("ORANTIUM_TRACE");
        if (path.isEmpty())
            return;
        m_file.setFileName(QString::fromLocal8Bit(path));
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return;
        m_file.write("[\n");
        m_clock.start();
        m_enabled = true;
    }
    ~TraceWriter()
    {
        if (m_enabled) {
            m_file.write("{}]\n");
            m_file.close();
        }
    }

    bool enabled() const { return m_enabled; }

    void write(const char* name, char phase, const QString& message)
    {
        QByteArray line = "{\"name\":\"";
        line += escape(QString::fromUtf8(name));
        line += "\",\"cat\":\"Performance\",\"ph\":\"";
        line += phase;
        line += "\",\"ts\":";
        line += QByteArray::number(double(m_clock.nsecsElapsed()) / 1000.0, 'f', 3);
        line += ",\"pid\":";
        line += QByteArray::number(QCoreApplication::applicationPid());
        line += ",\"tid\":";
        line += QByteArray::number(quintptr(QThread::currentThreadId()));
        if (phase == 'i')
            line += ",\"s\":\"t\"";
        if (!message.isEmpty()) {
            line += ",\"args\":{\"message\":\"";
            line += escape(message);
            line += "\"}";
        }
        line += "},\n";
        QMutexLocker lock(&m_mutex);
        m_file.write(line);
        m_file.flush();
    }

private:
    static QByteArray escape(const QString& text)
    {
        QByteArray out;
        for (char c : text.toUtf8()) {
            if (c == '"' || c == '\\') {
                out += '\\';
                out += c;
            } else if (uchar(c) < 0x20) {
                out += ' ';
            } else {
                out += c;
            }
        }
        return out;
    }

    QFile m_file;
    QElapsedTimer m_clock;
    QMutex m_mutex;
    bool m_enabled = false;
};

TraceWriter& writer()
{
    static TraceWriter instance;
    return instance;
}

} // namespace

bool isEnabled()
{
    static const bool enabled = writer().enabled();
    return enabled;
}

void emitEvent(const char* name, const QString& message)
{
    writer().write(name, 'i', message);
}

void beginInterval(const char* name, const QString& message)
{
    writer().write(name, 'B', message);
}

void endInterval(const char* name)
{
    writer().write(name, 'E', {});
}

} // namespace performanceLog
