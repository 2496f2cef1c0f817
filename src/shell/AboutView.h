#pragma once

#include <QWidget>

// The about window's content: name, version, what the application is for, and a contact.
class AboutView : public QWidget {
    Q_OBJECT
public:
    explicit AboutView(QWidget* parent = nullptr);

    // "Version 0.1.0 (1)"
    static QString versionText();
};
