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
        m_buffer.reserve(batchBytes + 1024);
        m_buffer += "[\n";
        m_clock.start();
        m_enabled = true;
        m_open = true;
    }
    ~TraceWriter() { close(); }

    bool enabled() const { return m_enabled; }

    void close()
    {
        QMutexLocker lock(&m_mutex);
        if (!m_open)
            return;
        m_open = false;
        m_buffer += "{}]\n";
        m_file.write(m_buffer);
        m_buffer.clear();
        m_file.close();
    }

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
        if (!m_open)
            return;
        m_buffer += line;
        // A write per event made traced drawing markedly slower; a batch at a time does not.
        if (m_buffer.size() >= batchBytes) {
            m_file.write(m_buffer);
            m_file.flush();
            m_buffer.resize(0); // keeps the capacity for the next batch
        }
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

    static constexpr qsizetype batchBytes = 64 * 1024;

    QFile m_file;
    QByteArray m_buffer;
    QElapsedTimer m_clock;
    QMutex m_mutex;
    bool m_enabled = false;
    bool m_open = false;
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

bool isDetailEnabled()
{
    static const bool enabled = isEnabled() && qgetenv("ORANTIUM_TRACE_DETAIL") == "1";
    return enabled;
}

void close()
{
    writer().close();
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
