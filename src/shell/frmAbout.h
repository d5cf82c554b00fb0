// The window that says which program this is, with a button for what it runs on.
#pragma once

#include <QDialog>
#include <functional>

#include "shell/system_information.h"

namespace kvn::dialogs {
class Asking;
}

namespace kvn::shell {

class frmAbout : public QDialog {
    Q_OBJECT

  public:
    using Facts = std::function<QList<Fact>()>;

    // `facts` finds out what the system information window shows.
    frmAbout(dialogs::Asking& asking, QWidget* owner, Facts facts = systemInformation);

  private:
    void showSystemInformation();

    dialogs::Asking& asking_;
    Facts facts_;
};

} // namespace kvn::shell
