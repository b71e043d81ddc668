#include "platform/base/message_boxes.h"

#include "platform/base/Immortal.h"
#include "platform/base/threads.h"

#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

namespace kelvo::platform {

namespace {

constexpr const char* kNoCaption = "Errore";

struct Seam {
    std::mutex mutex; ///< guards the pointer; what it points to is called without it
    std::shared_ptr<const MessageBoxHandler> handler;
};

Seam& TheSeam() {
    static Immortal<Seam> seam;
    return *seam;
}

thread_local ThreadBoxCollector* thread_collector = nullptr;

bool IsControl(char letter) {
    return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F;
}

// Those of U+0080 to U+009F, of which terminals obey some, too: two bytes in UTF-8.
bool BeginsWithWideControl(std::string_view text) {
    return text.size() >= 2 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

// A run of line ends and blanks becomes one blank, any other control character a question mark.
void AppendInOneLine(std::string& line, std::string_view text) {
    for (; !text.empty(); text.remove_prefix(1)) {
        const char letter = text.front();
        if (letter == '\r' || letter == '\n' || letter == '\t' || letter == ' ') {
            if (!line.empty() && line.back() != ' ') line += ' ';
        } else if (BeginsWithWideControl(text)) {
            line += '?';
            text.remove_prefix(1);
        } else {
            line += IsControl(letter) ? '?' : letter;
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
}

void WriteToStandardError(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
        if (written < 0 && errno != EINTR) return; // there is nobody left to tell
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
    std::shared_ptr<const MessageBoxHandler> next;
    if (handler) next = std::make_shared<const MessageBoxHandler>(std::move(handler));
    Seam& seam = TheSeam();
    const std::scoped_lock lock{seam.mutex};
    const auto previous = std::exchange(seam.handler, std::move(next));
    return previous ? *previous : MessageBoxHandler{};
}

int SafeAnswer(UINT type) {
    return (type & MB_TYPEMASK) == MB_YESNO ? IDNO : IDOK;
}

std::string MessageBoxLine(const MessageBoxRequest& request) {
    std::string line;
    AppendInOneLine(line, request.caption);
    line += ": ";
    AppendInOneLine(line, request.text);
    return line;
}

int ShowBoxOnConsole(const MessageBoxRequest& request) {
    WriteToStandardError(MessageBoxLine(request) + '\n');
    return SafeAnswer(request.type);
}

ThreadBoxCollector::ThreadBoxCollector() : previous_(std::exchange(thread_collector, this)) {}

ThreadBoxCollector::~ThreadBoxCollector() {
    thread_collector = previous_;
}

int ThreadBoxCollector::Collect(MessageBoxRequest request) {
    boxes_.push_back(std::move(request));
    return SafeAnswer(boxes_.back().type);
}

ThreadBoxCollector* ThreadBoxCollector::OfThisThread() {
    return thread_collector;
}

MessageBoxRecorder::MessageBoxRecorder()
    : previous_(SetMessageBoxHandler(
          [this](const MessageBoxRequest& request) { return Answer(request); })) {}

MessageBoxRecorder::~MessageBoxRecorder() {
    SetMessageBoxHandler(std::move(previous_));
}

void MessageBoxRecorder::AnswerNext(std::vector<int> answers) {
    const std::scoped_lock lock{mutex_};
    answers_ = std::move(answers);
}

void MessageBoxRecorder::AnswerQuestions(int answer) {
    const std::scoped_lock lock{mutex_};
    question_answer_ = answer;
}

std::vector<MessageBoxRequest> MessageBoxRecorder::Boxes() const {
    const std::scoped_lock lock{mutex_};
    return boxes_;
}

std::vector<std::string> MessageBoxRecorder::Texts() const {
    const std::scoped_lock lock{mutex_};
    std::vector<std::string> texts;
    for (const MessageBoxRequest& box : boxes_) {
        texts.push_back(box.text);
    }
    return texts;
}

void MessageBoxRecorder::Clear() {
    const std::scoped_lock lock{mutex_};
    boxes_.clear();
}

int MessageBoxRecorder::Answer(const MessageBoxRequest& request) {
    const std::scoped_lock lock{mutex_};
    boxes_.push_back(request);
    if (!answers_.empty()) {
        const int answer = answers_.front();
        answers_.erase(answers_.begin());
        return answer;
    }
    const bool is_question = (request.type & MB_TYPEMASK) == MB_YESNO;
    return is_question && question_answer_ ? *question_answer_ : SafeAnswer(request.type);
}

} // namespace kelvo::platform

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    kelvo::platform::ThreadCheckpoint();
    const kelvo::platform::MessageBoxRequest request{
        .owner = owner,
        .text = text == nullptr ? "" : text,
        .caption = caption == nullptr ? kelvo::platform::kNoCaption : caption,
        .type = type,
    };
    if (auto* const collector = kelvo::platform::ThreadBoxCollector::OfThisThread()) {
        return collector->Collect(request);
    }
    std::shared_ptr<const kelvo::platform::MessageBoxHandler> handler;
    {
        auto& seam = kelvo::platform::TheSeam();
        const std::scoped_lock lock{seam.mutex};
        handler = seam.handler;
    }
    return handler ? (*handler)(request) : kelvo::platform::ShowBoxOnConsole(request);
}
