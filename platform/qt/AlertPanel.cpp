#include "platform/qt/AlertPanel.h"

#include <QtCore/QTextBoundaryFinder>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <algorithm>

#include "platform/linux/ui/StandardErrorAlert.h"
#include "platform/qt/PanelWindow.h"

namespace quennel {
namespace {

constexpr int readableLineLength = 64;   // in characters of average width
constexpr qsizetype longestText = 1000;  // in UTF-16 units, as all lengths of the toolkit
constexpr qsizetype longestWord = 60;
constexpr int mostLines = 20;

/// A word that cannot be broken, such as a file's name, with its middle left out where it would
/// make the window as wide as the screen.
QString shortenedWord(const QString& word) {
  return word.size() <= longestWord ? word : word.first(36) + "\u2026" + word.last(20);
}

/// The start of a text that may be as long as the output of any program.
QString shortenedText(const QString& text) {
  qsizetype end = -1;
  for (int line = 0; line < mostLines; ++line) {
    end = text.indexOf('\n', end + 1);
    if (end < 0) {
      end = text.size();
      break;
    }
  }
  end = std::min(end, longestText);
  return end < text.size() ? text.first(end) + "\u2026" : text;
}

/// What fits a window of the text.
QString shownText(const std::optional<std::string>& string) {
  const QString text = shortenedText(QString::fromStdString(string.value_or("")));
  QString shown;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  for (qsizetype start = 0, end = finder.toNextBoundary(); end >= 0;
       start = end, end = finder.toNextBoundary()) {
    shown += shortenedWord(text.sliced(start, end - start));
  }
  return shown;
}

void setUpLabel(QLabel& label) {
  label.setTextFormat(Qt::PlainText);  // a file's name may look like markup
  label.setTextInteractionFlags(Qt::TextSelectableByMouse);
}

}  // namespace

AlertPanel::AlertPanel(const Alert& alert)
    : QMessageBox(QApplication::activeModalWidget()), _answer(dismissingAnswer(alert)) {
  setWindowTitle("Quennel");
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowCloseButtonHint);
  keepAboveOthers(*this);
  setIcon(alert.alertStyle == AlertStyle::Critical ? Critical : Information);
  setTexts(alert);
  addButtons(alert);
}

int AlertPanel::run() {
  showInFront(*this);
  exec();
  return _answer;
}

void AlertPanel::setTexts(const Alert& alert) {
  setText(shownText(alert.messageText));
  setInformativeText(shownText(alert.informativeText));
  setAccessibleName(text());
  setAccessibleDescription(informativeText());
  // QMessageBox has settings for its first text only.
  if (auto* const title = findChild<QLabel*>("qt_msgbox_label")) {
    setUpLabel(*title);
    QFont font = title->font();
    font.setBold(true);
    title->setFont(font);
  }
  if (auto* const message = findChild<QLabel*>("qt_msgbox_informativelabel")) {
    setUpLabel(*message);
    // Otherwise a short title would make the message below it as narrow.
    const int widest = message->fontMetrics().averageCharWidth() * readableLineLength;
    const QRect bounds = message->fontMetrics().boundingRect(QRect(0, 0, widest, 0),
                                                             Qt::TextWordWrap, message->text());
    message->setMinimumWidth(std::min(bounds.width() + 1, widest));
  }
}

void AlertPanel::addButtons(const Alert& alert) {
  if (alert.buttons.empty()) {
    addButton(Ok);
    return;
  }
  int answer = UserInterface::alertFirstButtonReturn;
  for (const std::string& title : alert.buttons) {
    const bool isFirst = answer == UserInterface::alertFirstButtonReturn;
    QPushButton* const button = addButton(buttonTitle(title), isFirst ? AcceptRole : RejectRole);
    connect(button, &QPushButton::clicked, this, [this, answer] { _answer = answer; });
    if (isFirst) {
      setDefaultButton(button);
    }
    setEscapeButton(button);
    ++answer;
  }
}

}  // namespace quennel
