#pragma once
#include <string>

namespace lv {

// The button sets of the program's message boxes.
enum class Buttons { Ok, OkCancel, YesNo, RetryCancel };
// None is for the boxes the program shows without an icon.
enum class Icon { None, Critical, Exclamation, Information, Question };
enum class Answer { Ok, Cancel, Yes, No, Retry };

// What a box says beyond its fixed text: why it came up and what to do.
// Informative text shows under the text; detailed text behind a button.
struct BoxDetail {
    std::string informative = {};
    std::string detailed = {};
    bool empty() const { return informative.empty() && detailed.empty(); }
};

// Modal questions to the operator. The model asks through here so that a test
// can answer from a script and the window can use its own dialogs.
class Prompter {
public:
    virtual ~Prompter() = default;
    // A box closed without a button (window manager, Escape) answers as its
    // negative button would: Cancel or No.
    virtual Answer ask(const std::string& title, const std::string& text, Buttons buttons,
                       Icon icon, const BoxDetail& detail = {}) = 0;
};

}  // namespace lv
