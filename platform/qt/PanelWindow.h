#pragma once

#include <QtCore/QString>
#include <string>

class QWidget;

namespace quennel {

// What the windows of the helper have in common.

/// Lets the window stand above those of all applications. Called before it is shown.
void keepAboveOthers(QWidget& window);

/// Shows the window and gives it the keyboard.
void showInFront(QWidget& window);

/// A button's text as it is: "&" marks no shortcut key.
QString buttonTitle(const std::string& text);

/// The folder, or the nearest one above it that is there and whose name the toolkit can express.
QString nearestFolder(std::string path);

/// A tool tip's text as it is, even when it looks like markup.
QString toolTipText(const std::string& text);

}  // namespace quennel
