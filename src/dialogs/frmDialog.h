// The one dialog with which most commands ask for their numbers. It has no fields of its own: the
// caller adds rows, fills its lists, shows it through Asking::showModal and reads the rows back by
// row number. It neither checks ranges nor remembers anything between two uses.
#pragma once

#include <QDialog>
#include <QString>
#include <QVariant>
#include <vector>

#include "dialogs/color_button.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QScrollArea;

namespace kvn::dialogs {

class Asking;

class frmDialog : public QDialog {
    Q_OBJECT

  public:
    enum Kind { Text = 0, Color = 1, Combo = 2, Check = 3, Option = 4 };

    // `asking` shows the colour dialog of colour rows. `owner` may be null.
    frmDialog(Asking& asking, QWidget* owner);
    ~frmDialog() override;

    // True once the user left by Cancel, Esc or the close box.
    bool Cancelled = false;
    // The content of the number box that last received the focus; one for all boxes.
    QString LastText;

    qint16 ControlCount() const { return static_cast<qint16>(rows_.size()); }
    // True while AddControl runs; no ControlChanged is raised meanwhile.
    bool Adding() const { return adding_; }

    // Adds row number ControlCount(). `value` by kind: Text shows a string or number; Color is a
    // 24-bit value, red in the low byte; Combo ignores it; Check and Option take a truth value (a
    // boolean, a number, or a text that reads as one; throws errors::typeMismatch otherwise).
    // A kind above 4 gives a row with a label and no control.
    void AddControl(const QString& label, const QVariant& value, int kind);

    // The controls of row i. Each throws errors::subscriptOutOfRange if row i is of another kind
    // or does not exist. A list starts with nothing chosen.
    QLabel* lblLabel(int row) const;
    QLineEdit* txtText(int row) const;
    ColorButton* cmdColor(int row) const;
    QComboBox* cmbCombo(int row) const;
    QCheckBox* chkCheck(int row) const;
    QRadioButton* optOption(int row) const;

    // What stands in row i, as callers need it.
    double number(int row) const;  // numeric prefix of the text, 0 if there is none
    quint32 color(int row) const;  // 24-bit value
    int listIndex(int row) const;  // from 0, -1 if nothing was chosen
    bool isChecked(int row) const; // check box or option button

    // Fills the list of row i and chooses an item; -1 chooses nothing.
    void setList(int row, const QStringList& items, int index);

  signals:
    // After the user or a handler changed row `index`. Never for option rows. A handler that
    // writes into a row is called again and needs its own guard.
    void ControlChanged(qint16 index, QWidget* control);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

  public slots:
    void accept() override;
    void reject() override;

  private:
    struct Row {
        int kind;
        QLabel* label;
        QWidget* control; // null for an unknown kind
    };

    QWidget* control(int row, int kind) const;
    QWidget* makeControl(int row, int kind, const QString& label, const QVariant& value);
    QWidget* makeText(int row, const QVariant& value);
    QWidget* makeColor(int row, const QVariant& value);
    QWidget* makeCombo(int row);
    QWidget* makeSwitch(int row, int kind, const QString& label, const QVariant& value);
    void chooseColor(int row);
    void changed(int row);
    void makeBottom();
    void place();
    void orderFocus();

    Asking& asking_;
    QScrollArea* scroller_;
    QWidget* page_;
    QWidget* picBottom_;
    QPushButton* cmdOK_;
    QPushButton* cmdCancel_;
    QButtonGroup* options_;
    std::vector<Row> rows_;
    bool adding_ = false;
};

} // namespace kvn::dialogs
