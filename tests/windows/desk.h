/* A display of its own with the program on it, used as a person does: windows are told apart by the
 * name of their shell, buttons by their colour on the screen and their place, and everything is
 * done with the pointer and the keyboard of the display. Nothing in here calls the program's code.
 */
#ifndef OVINST_TESTS_WINDOWS_DESK_H
#define OVINST_TESTS_WINDOWS_DESK_H

#include "runs/run.h"

struct _XDisplay;

inline const char s_caBox[] = "Orvane Message";

/* A medium and a destination whose paths the pictures may show: short, and the same each time
 * unless another test has them just now. */
struct ShownMedium : Medium {
    std::string top = "/tmp/setup"; /* of both */

    ShownMedium();
    ~ShownMedium();
    bool nobodyLeft() const;

    /* A page with one button, which installs one package of these operations. */
    void offer(const std::string &operations);
};

/* The sample medium there. It names no destination, so that -dest counts. */
struct SampleMedium : ShownMedium {
    SampleMedium();
    std::string history() { return installed("SetupFiles/.kivo.his"); }
};

/* Where something lies on the screen. */
struct Box {
    int iX, iY, iWidth, iHeight;
};

/* What can be pressed in a window: the buttons row by row from the left, negative numbers from the
 * last; from CHECK on the check boxes, which leave the window there. */
enum { FIRST = 0, LAST = -1, CHECK = 100 };
enum After { GOES, STAYS };

struct Step {
    const char *pShell;
    int iThing;
    const char *pPicture = nullptr; /* to be kept before, if any */
    After after = GOES;             /* whether the window goes; the next may have the same name */
};
typedef std::vector<Step> Steps;

struct Desk {
    std::string name; /* of the display, ":N" */
    pid_t iServer;
    pid_t iProgram = -1;
    _XDisplay *pDisplay;
    std::string out; /* the path of what the program prints, both streams */

    explicit Desk(const std::string &screen = "1280x1024x24");
    ~Desk(); /* the program and the server end */
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    /* Starts the medium's setup with the usual options, from the medium, one at a time, and takes
     * these steps. False when one of them cannot be taken. */
    bool start(const Medium &medium, const Steps &steps = {});
    bool go(const Steps &steps);

    /* The exit status, 128 and the signal for one that was killed, -1 when it does not end. */
    int status();

    /* The window of that shell once it is shown and at rest; 0 when it does not come. */
    unsigned long window(const std::string &shell);
    bool isShown(const std::string &shell);
    bool isGone(const std::string &shell);

    /* Where the window lies on the screen, and taking it elsewhere as its frame would. */
    Box place(const std::string &shell);
    void move(const std::string &shell, int iX, int iY);

    std::vector<Box> buttons(const std::string &shell);
    std::vector<Box> checks(const std::string &shell);
    bool showsButtons(const std::string &shell, size_t iCount);

    /* Which check boxes are set, from the top: 'x' or '-'. */
    bool showsMarks(const std::string &shell, const std::string &marks);

    void click(int iX, int iY);

    /* xdotool's names of keys for the window, which gets the keyboard as a window manager would
     * give it. */
    void keys(const std::string &shell, const std::string &names);

    /* Replaces what the field with the keyboard holds. */
    void type(const std::string &shell, const std::string &text);

    /* Replaces what a browser proposes: its field is the one above the buttons. */
    void choose(const std::string &browser, const std::string &path);

    /* Keeps a picture of the window as NAME.png in the build directory's "pictures". */
    void picture(const std::string &shell, const std::string &name);

    std::string printed() const { return readFile(out); }
};

#endif
