#pragma once
#include <deque>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/prompter.h"

namespace lv::test {

// Answers questions from a queue and writes every question down. A question
// nobody scripted an answer for fails the test instead of guessing one.
class ScriptedPrompter : public Prompter {
public:
    struct Question {
        std::string title;
        std::string text;
        Buttons buttons;
        Icon icon;
        bool operator==(const Question&) const = default;
        // Readable failure messages instead of a byte dump.
        friend void PrintTo(const Question& q, std::ostream* os) {
            *os << "[" << q.title << "] " << q.text;
        }
    };

    Answer ask(const std::string& title, const std::string& text, Buttons buttons, Icon icon,
               const BoxDetail& detail = {}) override {
        asked.push_back({title, text, buttons, icon});
        details.push_back(detail);
        if (onAsk) onAsk();
        if (answers.empty())
            throw std::runtime_error("ScriptedPrompter: unexpected question \"" + text + "\"");
        const Answer a = answers.front();
        answers.pop_front();
        return a;
    }

    std::deque<Answer> answers;
    // Runs while a box is up: what the operator does before answering.
    std::function<void()> onAsk;
    std::vector<Question> asked;
    // The informative and detailed texts, one entry per question asked.
    std::vector<BoxDetail> details;
};

}  // namespace lv::test
