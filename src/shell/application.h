// The application object. It is the last place where a failure of a handler ends, so that none
// ends the program, and it leaves the editing keys to the field that has the focus.
#pragma once

#include <QApplication>
#include <exception>
#include <functional>

namespace kvn::shell {

class Application : public QApplication {
    Q_OBJECT

  public:
    Application(int& argc, char** argv);

    using Report = std::function<void(std::exception_ptr failure)>;
    // Who tells the user. It is called from the event loop, never from within the failed handler,
    // and not again while a report is still up.
    void setReport(Report report) { report_ = std::move(report); }

    bool notify(QObject* receiver, QEvent* event) override;

  private:
    void failed(std::exception_ptr failure);

    Report report_;
    bool reporting_ = false;
};

} // namespace kvn::shell
