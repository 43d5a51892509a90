#pragma once

#include <functional>

class QMainWindow;

namespace orvanta {

/// What the main menu asks of the application; what concerns the window or the control that has the
/// keyboard, it does itself.
struct MainMenuActions {
    std::function<void()> showAbout;
    std::function<void()> showSettings;
    std::function<void()> terminate;
};

/// Puts the menus "orvanta", "Editar" and "Janela" into the window's menu bar. Command is Control.
void installMainMenu(QMainWindow& window, MainMenuActions actions);

} // namespace orvanta
