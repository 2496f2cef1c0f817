#include "MapKeyDispatch.h"

#include "editing/DocumentController.h"
#include "editing/Markers.h"
#include "editing/NodeActions.h"

#include <array>

namespace MapKeyDispatch {

namespace {

using NodeCommands::CanvasKeyAction;
using NodeCommands::CanvasKeyBinding;
using A = CanvasKeyAction;
using C = NodeCommand;

constexpr Qt::KeyboardModifiers relevant =
    Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier | Qt::MetaModifier;

CanvasKeyBinding command(int key, Qt::KeyboardModifiers mods, C c, QString marker = {})
{
    return {{Qt::Key(key), mods}, A::command, c, std::move(marker)};
}

CanvasKeyBinding action(int key, Qt::KeyboardModifiers mods, A a)
{
    return {{Qt::Key(key), mods}, a, C::edit, {}};
}

// Ctrl+Shift with a digit arrives as the shifted character on most layouts, as the digit on
// some: both are taken. Index = digit.
constexpr std::array<int, 10> shiftedDigits{
    Qt::Key_ParenRight, Qt::Key_Exclam, Qt::Key_At, Qt::Key_NumberSign, Qt::Key_Dollar,
    Qt::Key_Percent, Qt::Key_AsciiCircum, Qt::Key_Ampersand, Qt::Key_Asterisk, Qt::Key_ParenLeft,
};

std::optional<int> markerDigit(int key)
{
    for (int digit = 0; digit < 10; ++digit)
        if (key == shiftedDigits[size_t(digit)] || key == Qt::Key_0 + digit)
            return digit;
    return std::nullopt;
}

} // namespace

std::optional<CanvasKeyBinding> resolve(int key, Qt::KeyboardModifiers modifiers, bool hasAnySelection)
{
    const Qt::KeyboardModifiers mods = modifiers & relevant;
    const bool ctrl = mods & Qt::ControlModifier;
    const bool shift = mods & Qt::ShiftModifier;
    const bool alt = mods & Qt::AltModifier;
    const bool onlyCtrl = mods == Qt::ControlModifier;
    const bool onlyCtrlShift = mods == (Qt::ControlModifier | Qt::ShiftModifier);
    if (key == Qt::Key_Enter)
        key = Qt::Key_Return;

    switch (key) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return command(key, mods, C::deleteSelection);
    case Qt::Key_Escape:
        if (!hasAnySelection)
            return std::nullopt;
        return action(key, mods, A::clearSelection);
    default:
        break;
    }
    if (key == Qt::Key_A && ctrl)
        return command(key, mods, C::selectAll);
    if (onlyCtrl) {
        switch (key) {
        case Qt::Key_X: return command(key, mods, C::cut);
        case Qt::Key_C: return command(key, mods, C::copy);
        case Qt::Key_V: return command(key, mods, C::paste);
        case Qt::Key_D: return command(key, mods, C::duplicate);
        case Qt::Key_Semicolon: return command(key, mods, C::splitSentences);
        case Qt::Key_Z: return action(key, mods, A::undo);
        case Qt::Key_J: return command(key, mods, C::join);
        case Qt::Key_Apostrophe: return command(key, mods, C::toggleQuote);
        default: break;
        }
    }
    if (onlyCtrlShift) {
        if (key == Qt::Key_Z)
            return action(key, mods, A::redo);
        if (key == Qt::Key_C)
            return command(key, mods, C::copyBranch);
        if (const auto digit = markerDigit(key)) {
            if (*digit == Markers::removalDigit)
                return command(key, mods, C::removeMarker);
            for (const Markers::Marker& m : Markers::all())
                if (m.digit == *digit)
                    return command(key, mods, C::setMarker, m.symbol);
        }
    }
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab: // Shift+Tab arrives as its own key
        return command(key, mods, C::newLineUnder);
    case Qt::Key_Return:
        return command(key, mods, ctrl ? C::split : shift ? C::newLineAbove : C::newLineBelow);
    case Qt::Key_Space:
        return command(key, mods, ctrl ? C::join : C::edit);
    case Qt::Key_Up:
        return alt ? command(key, mods, C::moveUp) : action(key, mods, shift ? A::extendUp : A::selectUp);
    case Qt::Key_Down:
        return alt ? command(key, mods, C::moveDown) : action(key, mods, shift ? A::extendDown : A::selectDown);
    case Qt::Key_Left:
        if (alt)
            return command(key, mods, C::promote);
        if (ctrl)
            return command(key, mods, C::fold);
        return action(key, mods, shift ? A::extendLeft : A::selectParent);
    case Qt::Key_Right:
        if (alt)
            return command(key, mods, C::demote);
        if (ctrl)
            return command(key, mods, C::unfold);
        return action(key, mods, shift ? A::extendRight : A::selectFirstChild);
    default:
        return std::nullopt;
    }
}

bool handle(int key, Qt::KeyboardModifiers modifiers, DocumentController& controller, const NodeActions& actions)
{
    const auto binding = resolve(key, modifiers, !controller.effectiveSelection().isEmpty());
    return binding && NodeCommands::run(*binding, controller, actions);
}

} // namespace MapKeyDispatch
