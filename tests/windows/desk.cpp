#include "windows/desk.h"
#include "server.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/* ---- media ---- */

ShownMedium::ShownMedium()
{
    if (mkdir(top.c_str(), 0700) < 0)
        fs::create_directory(top = scratch / "setup");
    fs::rename(place, top + "/medium");
    place = top + "/medium";
    dest = top + "/Orvane";
    tree = dest + "/prod/";
}

ShownMedium::~ShownMedium()
{
    std::error_code ignored;

    fs::remove_all(top, ignored);
}

bool ShownMedium::nobodyLeft() const
{
    return soon([&] { return processesNaming(place).empty(); }, 5);
}

void ShownMedium::offer(const std::string &operations)
{
    file("SetupFiles/eula.txt", "Use it as you like.\n");
    describe("Package \"all\" \"All\"\n" + operations +
                 "Suite \"Base\" all\nConfigBegin\n1 MainDlg \"Page\" \"text\" \"\" 4\n"
                 "2 CusDlg \"List\" \"text\" \"\" 0 5\n"
                 "3 CusDlg \"List\" \"text\" \"\" 0 5\n4 Suite \"Base\" \"All of it\" \"\" 1\n"
                 "5 Suite \"Base\" \"All of it\" \"\" 0\nConfigEnd\n",
             usualHeader("NoDisplayLog\n"));
}

SampleMedium::SampleMedium()
{
    must("cd " + place +
         " && ln -s " SETUP_BUILD_DIR "/medium/[A-Z]* . && "
         "sed '/^InstallDirectory /d' " SETUP_BUILD_DIR "/medium/cdinst.dat > cdinst.dat");
    tree = dest + "/kivo/";
}

/* ---- the display ---- */

static pid_t startProcess(const std::vector<std::string> &words, int iOut)
{
    std::vector<char *> apWords;
    const pid_t iChild = fork();

    if (iChild)
        return iChild;
    (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
    for (const std::string &word : words)
        apWords.push_back(strdup(word.c_str()));
    apWords.push_back(nullptr);
    dup2(iOut, STDOUT_FILENO);
    dup2(iOut, STDERR_FILENO);
    execvp(apWords[0], apWords.data());
    _exit(127);
}

static int ignoreError(Display *, XErrorEvent *)
{
    return 0; /* a window that has gone meanwhile */
}

Desk::Desk(const std::string &screen)
    : iServer(startServer(screen.c_str(), "96", &name)), pDisplay(XOpenDisplay(name.c_str()))
{
    EXPECT_NE(nullptr, pDisplay) << "no Xvfb";
    XSetErrorHandler(ignoreError);
}

static void end(pid_t iProcess)
{
    if (iProcess <= 0)
        return;
    kill(iProcess, SIGKILL);
    waitpid(iProcess, nullptr, 0);
}

Desk::~Desk()
{
    end(iProgram);
    if (pDisplay)
        XCloseDisplay(pDisplay);
    end(iServer);
}

bool Desk::start(const Medium &medium, const Steps &steps)
{
    end(iProgram);
    out = medium.scratch / "printed";
    const int iOut = open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    iProgram = startProcess({"env", "-C", medium.place, "DISPLAY=" + name,
                             "HOME=" + (medium.scratch / "home"), "USER=artist", "LC_ALL=C.UTF-8",
                             "XENVIRONMENT=/dev/null", medium.place + "/setup", "-noroot", "-dest",
                             medium.dest},
                            iOut);
    close(iOut);
    return go(steps);
}

int Desk::status()
{
    int iStatus = 0;

    if (!soon([&] { return waitpid(iProgram, &iStatus, WNOHANG) == iProgram; }))
        return -1;
    iProgram = -1;
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

/* ---- windows ---- */

static unsigned long findShell(Display *pDisplay, const std::string &shell)
{
    Window root = 0, parent = 0, found = 0;
    Window *aWindows = nullptr;
    unsigned iWindows = 0;

    XQueryTree(pDisplay, DefaultRootWindow(pDisplay), &root, &parent, &aWindows, &iWindows);
    for (unsigned i = iWindows; i-- > 0 && !found;) {
        XWindowAttributes info = {};
        XClassHint hint = {};
        if (!XGetWindowAttributes(pDisplay, aWindows[i], &info) || info.map_state != IsViewable ||
            !XGetClassHint(pDisplay, aWindows[i], &hint))
            continue;
        if (shell == hint.res_name)
            found = aWindows[i];
        XFree(hint.res_name);
        XFree(hint.res_class);
    }
    if (aWindows)
        XFree(aWindows);
    return found;
}

static bool holds(const Box &box, int iX, int iY)
{
    return iX >= box.iX && iY >= box.iY && iX < box.iX + box.iWidth && iY < box.iY + box.iHeight;
}

/* What the screen shows at a window's place, and where that is. */
struct Shot {
    Box place = {0, 0, 0, 0};
    std::vector<unsigned> pixels;

    /* In the screen's coordinates. */
    unsigned at(int iX, int iY) const
    {
        const size_t index = (size_t)((iY - place.iY) * place.iWidth + iX - place.iX);
        return holds(place, iX, iY) ? pixels[index] : 0;
    }
};

static Shot take(Display *pDisplay, unsigned long window)
{
    Shot shot;
    XWindowAttributes info = {};
    Window child = 0;

    if (!window || !XGetWindowAttributes(pDisplay, window, &info) ||
        !XTranslateCoordinates(pDisplay, window, info.root, 0, 0, &shot.place.iX, &shot.place.iY,
                               &child))
        return shot;
    XImage *pImage = XGetImage(pDisplay, window, 0, 0, (unsigned)info.width, (unsigned)info.height,
                               0xffffff, ZPixmap);
    if (!pImage)
        return shot;
    shot.place.iWidth = info.width;
    shot.place.iHeight = info.height;
    shot.pixels.resize((size_t)(info.width * info.height));
    memcpy(shot.pixels.data(), pImage->data, shot.pixels.size() * 4); /* 32 bits, no padding */
    XDestroyImage(pImage);
    return shot;
}

/* At rest: drawn, and the same twice. */
unsigned long Desk::window(const std::string &shell)
{
    unsigned long found = 0;
    std::vector<unsigned> last;

    const bool bCame = soon([&] {
        found = findShell(pDisplay, shell);
        Shot shot = take(pDisplay, found);
        const bool bRests = !shot.pixels.empty() && shot.pixels == last;
        last = std::move(shot.pixels);
        usleep(30000);
        return bRests;
    });
    return bCame ? found : 0;
}

bool Desk::isShown(const std::string &shell)
{
    return findShell(pDisplay, shell) != 0;
}

bool Desk::isGone(const std::string &shell)
{
    return soon([&] { return !isShown(shell); });
}

Box Desk::place(const std::string &shell)
{
    return take(pDisplay, window(shell)).place;
}

void Desk::move(const std::string &shell, int iX, int iY)
{
    XMoveWindow(pDisplay, window(shell), iX, iY);
    XSync(pDisplay, False);
}

/* ---- what a window shows ---- */

/* The looks' own colours, see the resources: no other thing on the screen of that size has them. */
struct Kind {
    unsigned colour;
    int iLeastWidth, iLeastHeight, iMostWidth, iMostHeight;
};
static const Kind s_button = {0xfcfcfc, 28, 18, 400, 160};
static const Kind s_check = {0x8a9197, 10, 10, 30, 30}; /* the line around it */
enum { CHECK_EMPTY = 0xffffff };

/* Rectangles of a kind, by their upper and left edges. Row by row; a row is things whose middles
 * are close. */
static std::vector<Box> find(const Shot &shot, const Kind &kind)
{
    std::vector<Box> found;
    const auto rowOf = [](const Box &box) { return (box.iY + box.iHeight / 2) / 16; };
    const auto is = [&](int iX, int iY) { return shot.at(iX, iY) == kind.colour; };

    for (int iY = shot.place.iY; iY < shot.place.iY + shot.place.iHeight; iY++)
        for (int iX = shot.place.iX; iX < shot.place.iX + shot.place.iWidth; iX++) {
            Box box = {iX, iY, 1, 1};
            if (!is(iX, iY) || is(iX - 1, iY) || is(iX, iY - 1) ||
                std::any_of(found.begin(), found.end(),
                            [&](const Box &other) { return holds(other, iX, iY); }))
                continue;
            while (is(iX + box.iWidth, iY))
                box.iWidth++;
            while (is(iX, iY + box.iHeight))
                box.iHeight++;
            if (box.iWidth >= kind.iLeastWidth && box.iHeight >= kind.iLeastHeight &&
                box.iWidth <= kind.iMostWidth && box.iHeight <= kind.iMostHeight)
                found.push_back(box);
        }
    std::stable_sort(found.begin(), found.end(), [&](const Box &a, const Box &b) {
        return rowOf(a) != rowOf(b) ? rowOf(a) < rowOf(b) : a.iX < b.iX;
    });
    return found;
}

std::vector<Box> Desk::buttons(const std::string &shell)
{
    return find(take(pDisplay, window(shell)), s_button);
}

std::vector<Box> Desk::checks(const std::string &shell)
{
    return find(take(pDisplay, window(shell)), s_check);
}

bool Desk::showsButtons(const std::string &shell, size_t iCount)
{
    return soon([&] { return isShown(shell) && buttons(shell).size() == iCount; });
}

bool Desk::showsMarks(const std::string &shell, const std::string &marks)
{
    std::string shown;

    const bool bRight = soon([&] {
        const Shot shot = take(pDisplay, window(shell));
        shown.clear();
        for (const Box &box : find(shot, s_check))
            shown += shot.at(box.iX + 2, box.iY + 2) == CHECK_EMPTY ? '-' : 'x';
        return shown == marks;
    });
    EXPECT_EQ(marks, shown);
    return bRight;
}

/* ---- the pointer and the keyboard ---- */

static void doIt(const Desk &desk, const std::string &command)
{
    must("DISPLAY=" + desk.name + " xdotool " + command);
}

void Desk::click(int iX, int iY)
{
    doIt(*this, "mousemove " + std::to_string(iX) + " " + std::to_string(iY) +
                    " mousedown 1 mouseup 1"); /* "click" takes ten times as long */
}

static bool take(Desk &desk, const Step &step)
{
    std::vector<Box> boxes;
    const bool bCheck = step.iThing >= CHECK;
    const int iNumber = bCheck ? step.iThing - CHECK : step.iThing;
    const size_t iLeast = iNumber < 0 ? (size_t)-iNumber : (size_t)iNumber + 1;

    if (step.pPicture)
        desk.picture(step.pShell, step.pPicture);
    const unsigned long left = desk.window(step.pShell);
    if (!left || !soon([&] {
            boxes = bCheck ? desk.checks(step.pShell) : desk.buttons(step.pShell);
            return boxes.size() >= iLeast;
        }))
        return false;
    const Box &box = boxes[iNumber < 0 ? boxes.size() - iLeast : (size_t)iNumber];
    desk.click(box.iX + box.iWidth / 2, box.iY + box.iHeight / 2);
    return bCheck || step.after == STAYS ||
           soon([&] { return findShell(desk.pDisplay, step.pShell) != left; });
}

bool Desk::go(const Steps &steps)
{
    for (const Step &step : steps)
        if (!take(*this, step)) {
            ADD_FAILURE() << step.pShell << ", " << step.iThing << "\n" << printed();
            return false;
        }
    return true;
}

static void giveKeyboard(Desk &desk, const std::string &shell)
{
    const unsigned long given = desk.window(shell);

    if (!given)
        return;
    doIt(desk, "mousemove 9999 9999"); /* it must not matter where the pointer is */
    XSetInputFocus(desk.pDisplay, given, RevertToPointerRoot, CurrentTime);
    XSync(desk.pDisplay, False);
    usleep(20000);
    (void)desk.window(shell); /* until it shows where the keyboard is */
}

/* One after the other, as fast as the program follows: it takes a key that comes too early for the
 * widget that is about to lose the keyboard. */
void Desk::keys(const std::string &shell, const std::string &names)
{
    std::istringstream words(names);

    giveKeyboard(*this, shell);
    for (std::string key; words >> key;) {
        doIt(*this, "key --delay 10 " + key);
        if (words.eof())
            break;
        usleep(40000);
        (void)window(shell);
    }
}

void Desk::type(const std::string &shell, const std::string &text)
{
    keys(shell, "ctrl+slash");
    doIt(*this, "type --delay 4 '" + text + "'");
}

void Desk::choose(const std::string &browser, const std::string &path)
{
    const Box ok = buttons(browser).at(0);

    click(ok.iX + ok.iWidth / 2, ok.iY - 50);
    type(browser, path);
}

void Desk::picture(const std::string &shell, const std::string &name_)
{
    const unsigned long shown = window(shell);

    ASSERT_NE(0u, shown) << shell;
    must("mkdir -p " SETUP_BUILD_DIR "/pictures && import -display " + name + " -window " +
         std::to_string(shown) + " " SETUP_BUILD_DIR "/pictures/" + name_ + ".png");
}
