#pragma once
// The message box, and the seam behind it: the desktop shows a real one, a console writes a line
// and takes the safe answer, a recorder keeps what was asked. Any thread.

#include "platform/base/types.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

inline constexpr UINT MB_OK = 0x00000000;
inline constexpr UINT MB_YESNO = 0x00000004;
inline constexpr UINT MB_TYPEMASK = 0x0000000F;
inline constexpr UINT MB_ICONHAND = 0x00000010;
inline constexpr UINT MB_ICONQUESTION = 0x00000020;
inline constexpr UINT MB_ICONEXCLAMATION = 0x00000030;
inline constexpr UINT MB_ICONMASK = 0x000000F0;
inline constexpr UINT MB_TASKMODAL = 0x00002000;
inline constexpr UINT MB_TOPMOST = 0x00040000;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

/// Asks or tells, and waits for the answer.
/// @param owner   the window that is inert meanwhile; null for none
/// @param text    UTF-8; null is empty
/// @param caption UTF-8; null is "Errore"
/// @param type    MB_OK or MB_YESNO, with icon and mode
/// @return IDOK, or IDYES or IDNO; 0 when no box could be shown.
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

namespace kelvo::platform {

struct MessageBoxRequest {
    HWND owner = nullptr;
    std::string text;
    std::string caption;
    UINT type = MB_OK;
};

/// Gives the answer, one of the ID numbers. Called on the thread that asks, without any lock;
/// whoever can only show boxes on one thread brings the request there.
using MessageBoxHandler = std::function<int(const MessageBoxRequest&)>;

/// Installs a handler; an empty one brings back the console. @return the one before.
MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

/// IDNO to a question, IDOK otherwise: what nobody will regret.
[[nodiscard]] int SafeAnswer(UINT type);

/// The request in one line, "caption: text", free of control characters, so that a hostile name
/// cannot drive a terminal.
[[nodiscard]] std::string MessageBoxLine(const MessageBoxRequest& request);

/// Writes the line on standard error, as one write, and gives the safe answer: what happens without
/// a handler.
int ShowBoxOnConsole(const MessageBoxRequest& request);

/// Keeps the boxes of one thread while it lives, in place of showing them, and gives each its safe
/// answer: for work that nobody is to be bothered with. Made, asked and destroyed by that thread;
/// a later one goes before an earlier one.
class ThreadBoxCollector {
public:
    ThreadBoxCollector();
    ~ThreadBoxCollector();
    ThreadBoxCollector(const ThreadBoxCollector&) = delete;
    ThreadBoxCollector& operator=(const ThreadBoxCollector&) = delete;

    /// The boxes so far, the oldest first.
    [[nodiscard]] const std::vector<MessageBoxRequest>& Boxes() const { return boxes_; }
    /// What MessageBoxA does on a thread that has a collector.
    int Collect(MessageBoxRequest request);
    /// Of the calling thread; null when it has none.
    static ThreadBoxCollector* OfThisThread();

private:
    std::vector<MessageBoxRequest> boxes_;
    ThreadBoxCollector* const previous_;
};

/// Keeps every box while it lives, in place of showing it, and gives the answers it was told.
/// Puts the handler before back when it goes.
class MessageBoxRecorder {
public:
    MessageBoxRecorder();
    ~MessageBoxRecorder();
    MessageBoxRecorder(const MessageBoxRecorder&) = delete;
    MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;

    /// What the next boxes are answered, in order; afterwards each gets its safe answer.
    void AnswerNext(std::vector<int> answers);
    /// From now on every question (MB_YESNO) without an answer of its own gets this one.
    void AnswerQuestions(int answer);
    /// The boxes so far, the oldest first.
    [[nodiscard]] std::vector<MessageBoxRequest> Boxes() const;
    /// Their texts alone.
    [[nodiscard]] std::vector<std::string> Texts() const;
    void Clear();

private:
    int Answer(const MessageBoxRequest& request);

    mutable std::mutex mutex_; ///< guards all below
    std::vector<MessageBoxRequest> boxes_;
    std::vector<int> answers_;
    std::optional<int> question_answer_;
    MessageBoxHandler previous_; ///< fixed after construction
};

} // namespace kelvo::platform
