#pragma once

#include <QDialog>

namespace ui {

// Product name, version, and the versions of the libraries the program runs on.
class TAboutForm : public QDialog {
    Q_OBJECT
public:
    explicit TAboutForm(QWidget* parent);
};

} // namespace ui
