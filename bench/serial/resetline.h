#pragma once

#include "resetwiring.h"

#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace bench {

// The receiver's reset input, driven by a modem line of its adapter or by a GPIO line. Open
// before the port is, and for as long as the object lives: the line stays where it was put
// while others open and close the port. Any thread.
class ResetLine
{
public:
    // Lets go of the reset. Null, with one line that names the thing and the cure, when the
    // line cannot be driven. `uart` is the receiver's port.
    static std::unique_ptr<ResetLine> open(const ResetWiring &wiring, const std::string &uart,
                                           std::string *error);

    // For the program that this one turns into or starts: the line stays open through exec,
    // and there inherited() takes it on, once. `uart` is the port's name there.
    void bequeath();
    static std::unique_ptr<ResetLine> inherited(const ResetWiring &wiring, const std::string &uart);

    ResetLine(const ResetLine &) = delete;
    ResetLine &operator=(const ResetLine &) = delete;
    ~ResetLine();

    // False when the line is not there any more.
    bool set(bool asserted);

private:
    ResetLine(const ResetWiring &lineWiring, std::string uartPath, int openDescriptor);

    bool drive();
    bool reopen();
    void keepWhenOpened();
    void followOpenings();

    const ResetWiring wiring;
    const std::string uart;
    std::mutex mutex;
    int descriptor; // of the port, or of the GPIO line; -1: handed on
    bool isAsserted = false;
    int openings = -1; // inotify's, of the port
    int end = -1;      // readable: the thread ends
    std::thread follower;
};

} // namespace bench
