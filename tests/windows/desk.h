/* A display of its own with the program on it, used as a person does: windows are told apart by the
 * name of their shell, buttons by their colour on the screen and their place, and everything is
 * done with the pointer and the keyboard of the display. Nothing in here calls the program's code.
 */
#ifndef OVINST_TESTS_WINDOWS_DESK_H
#define OVINST_TESTS_WINDOWS_DESK_H

#include <string>
#include <sys/types.h>
#include <vector>

#include "runs/run.h"

struct _XDisplay;

struct Box {
    int iX, iY, iWidth, iHeight;
};

/* The sample medium in a place of its own. It names no destination, so that -dest counts. */
struct SampleMedium : Medium {
    SampleMedium();

    /* Replaces a text of the description wherever it occurs. */
    void change(const std::string &from, const std::string &to);
};

/* A page with one button, which installs one package of these operations. */
std::string onePage(const std::string &operations);

struct Desk {
    pid_t iServer = -1;
    pid_t iProgram = -1;
    _XDisplay *pDisplay = nullptr;
    std::string name; /* of the display, ":N" */
    std::string out;  /* the path of what the program prints, both streams */

    explicit Desk(const std::string &screen = "1280x1024x24", int iDpi = 96);
    ~Desk(); /* the program and the server end */
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    /* Starts the medium's setup with the usual options and more; one at a time. */
    void start(const Medium &medium, const std::vector<std::string> &more = {});

    /* Starts it and passes the first pages, as far as the first main page. False when it does not
     * come. */
    bool startAtMainPage(const Medium &medium);

    /* The installing child, stopped with what it runs as soon as it has shown the shell. */
    pid_t stopAt(const std::string &shell);

    /* The exit status, 128 and the signal for one that was killed, -1 when it does not end. */
    int status(int iSeconds = 20);

    /* The window of that shell once it is shown and at rest; 0 when it does not come. */
    unsigned long window(const std::string &shell, int iSeconds = 20);
    bool isShown(const std::string &shell);
    bool isGone(const std::string &shell, int iSeconds = 20);
    bool showsButtons(const std::string &shell, size_t iCount);

    /* Where the window lies on the screen, and taking it elsewhere as its frame would. */
    Box place(const std::string &shell);
    void move(const std::string &shell, int iX, int iY);

    /* The push buttons that the window shows, row by row from the left, in screen coordinates. */
    std::vector<Box> buttons(const std::string &shell);

    /* Its check boxes from the top, and which of them are set: one letter each, 'x' or '-'. */
    std::vector<Box> checks(const std::string &shell);
    std::string marks(const std::string &shell);

    /* Presses the button of that number; negative ones count from the last. False without one. */
    bool press(const std::string &shell, int iButton);

    /* Presses it and waits until that window has gone: the next may have the same name. */
    bool leave(const std::string &shell, int iButton);
    bool check(const std::string &shell, int iBox);
    void click(int iX, int iY);

    /* xdotool's names of keys, and text, for the window that gets the keyboard as a window manager
     * would give it. */
    void keys(const std::string &shell, const std::string &names);
    void type(const std::string &shell, const std::string &text);

    /* Keeps a picture of the window as NAME.png in the build directory's "pictures". */
    void picture(const std::string &shell, const std::string &name);

    /* What the program printed so far. */
    std::string printed() const { return readFile(out); }
};

#endif
