// The frame around every command of a group: the working copy goes out, the entry of the chosen
// index acts on it, one write brings it back. A cancelled dialog leaves its step all the same; a
// stopped operation leaves nothing.
#pragma once

#include <functional>
#include <optional>

#include "basic/error.h"
#include "document/commands.h"
#include "effects/catalogue.h"

namespace kvn::effects {

// An index without an entry takes the frame's way with nothing in it.
void runGroup(const Group& group, frmMain& document, int index);

// The entry of a group in the command table.
template <const Group& group>
constexpr document::Command groupCommand(const char* name) {
    return {name, [](frmMain& document, int index) { runGroup(group, document, index); }};
}

// Runs an operation of the operation table on the working copy. `label` as for every operation.
void runOnCopy(frmMain& document, const char* operation, const QVariantList& arguments,
               const QString& label = {});

// Steps in which a failure leaves out its step only, and is told about at the end. A stop by the
// user ends them at once: nothing after it may touch the picture.
class ResumeNext {
  public:
    void step(const std::function<void()>& work);
    // The last failure, if there was one.
    const std::optional<RuntimeError>& error() const { return error_; }

  private:
    std::optional<RuntimeError> error_;
};

// The frame around such steps, with its last failure as the result. Without a working copy nothing
// runs: an old one would come back in place of the picture.
std::optional<RuntimeError> resumeNext(frmMain& document,
                                       const std::function<void(ResumeNext& run)>& steps);

// A box with the text and an OK button, and no picture. A stopped operation is passed over.
void plainBox(frmMain& document, const QString& text);
void plainBox(frmMain& document, const RuntimeError& error);

} // namespace kvn::effects
