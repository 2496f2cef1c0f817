#pragma once

#include "AppMode.h"
#include "ClipboardPasteboard.h"
#include "WindowCommands.h"

#include <QWidget>

#include <functional>
#include <optional>

class ColumnCanvas;
class ColumnWidthsStore;
class DeliveryView;
class FocusContentView;
class FocusWindow;
class MindMapCanvas;
class OpenDocument;
class Preferences;
class QStackedWidget;
class StatusBarView;

// The root of a document window: the view of the present mode with the status bar under the
// map, and the commands the menu bar reaches while the window is active.
class ContentView : public QWidget {
    Q_OBJECT
public:
    ContentView(OpenDocument* document, Preferences* preferences, QWidget* parent = nullptr);
    ~ContentView() override;

    AppMode mode() const { return m_mode; }
    bool setMode(AppMode mode);
    double scale() const;

    MindMapCanvas* canvas() const { return m_canvas; }
    StatusBarView* statusBar() const { return m_statusBar; }
    QWidget* currentView() const;

    // The records for the menu bar, as things stand now.
    WindowCommands commands();

    // Shows the file settings sheet (set by the window, which owns the sheet's parent).
    std::function<void()> onOpenFileSettings;
    void openFileSettings();

    // The columns view while that mode shows, else null.
    ColumnCanvas* columnCanvas() const { return m_columnCanvas; }

    // The delivery view while that mode shows, else null.
    DeliveryView* deliveryView() const { return m_deliveryView; }

    // Puts a line still open in the map's editor into the tree, before anything reads the tree
    // as a whole (save, close, delivery). With `keepEditing` the line stays open afterwards.
    void commitPendingEdit(bool keepEditing = false);

    // After a change to the tree that no document signal carries (a title set in place).
    void treeMutated();

    // Focus mode: a second map of the document alone, full screen on this window's screen.
    // Offered only in the map; leaving gives the keyboard back to this window.
    bool isFocusMode() const { return m_isFocusMode; }
    void toggleFocusMode();
    FocusContentView* focusView() const;

signals:
    void modeChanged(AppMode mode);
    // Something the menu bar shows may have changed: mode, zoom, selection.
    void commandsChanged();

private:
    // The document window's normal minimum width; delivery may ask for more.
    static constexpr int normalMinimumWidth = 800;
    void updateMinimumWidth();
    void refreshStatus();
    DeliveryView* makeDeliveryView();
    // Made anew at each entry, like the delivery view; the status bar moves along with it.
    void showColumns();
    void dropColumns();
    void enterFocusMode();
    void leaveFocusMode();

    OpenDocument* m_document;
    Preferences* m_preferences;
    AppMode m_mode = AppMode::tree;
    std::optional<ZoomFunctions> m_zoomFunctions;
    QStackedWidget* m_stack;
    QWidget* m_mapPage;
    MindMapCanvas* m_canvas;
    StatusBarView* m_statusBar;
    ClipboardPasteboard m_pasteboard;
    DeliveryView* m_deliveryView = nullptr;
    ColumnWidthsStore* m_columnWidths;
    QWidget* m_columnsPage = nullptr;
    ColumnCanvas* m_columnCanvas = nullptr;
    FocusWindow* m_focusWindow = nullptr;
    bool m_isFocusMode = false;
};
