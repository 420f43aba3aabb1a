// The least that a program can do to show a file dialog of the toolkit, in the folder that is its
// argument.

#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QFileDialog dialog;
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDirectory(QString::fromLocal8Bit(argc > 1 ? argv[1] : "/"));
  dialog.exec();
}
