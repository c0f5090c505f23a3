#include "windows/desk.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/* The looks' own colours, see the resources: no other thing on the screen has them. */
enum { BUTTON_COLOUR = 0xfcfcfc, CHECK_BORDER = 0x8a9197, CHECK_EMPTY = 0xffffff };

/* ---- the sample medium ---- */

SampleMedium::SampleMedium()
{
    const std::string sample = SETUP_BUILD_DIR "/medium/";
    std::string text;

    for (const char *pName : {"Archives", "Files", "Gallery", "Setup", "SetupFiles"})
        std::filesystem::create_symlink(sample + pName, place + "/" + pName);
    std::istringstream lines(readFile(sample + "cdinst.dat"));
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, 17, "InstallDirectory ") != 0)
            text += line + "\n";
    file("cdinst.dat", text);
    const size_t at = text.find("ProductDirectory ");
    tree = dest + "/" + text.substr(at + 17, text.find('\n', at) - at - 17) + "/";
}

void SampleMedium::change(const std::string &from, const std::string &to)
{
    std::string text = readFile(place + "/cdinst.dat");
    size_t at = text.find(from);

    ASSERT_NE(std::string::npos, at) << from;
    for (; at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    file("cdinst.dat", text);
}

std::string onePage(const std::string &operations)
{
    return "Package \"all\" \"All\"\n" + operations +
           "Suite \"Base\" all\nConfigBegin\n1 MainDlg \"Page\" \"text\" \"\" 4\n"
           "2 CusDlg \"List\" \"text\" \"\" 0 5\n4 Suite \"Base\" \"All of it\" \"\" 1\n"
           "5 Suite \"Base\" \"All of it\" \"\" 0\nConfigEnd\n";
}

/* ---- the display ---- */

static pid_t startProcess(const std::vector<std::string> &words, int iOut,
                          const std::vector<std::string> &environment = {})
{
    std::vector<char *> apWords;
    const pid_t iChild = fork();

    if (iChild)
        return iChild;
    (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
    for (const std::string &setting : environment)
        putenv(strdup(setting.c_str()));
    for (const std::string &word : words)
        apWords.push_back(strdup(word.c_str()));
    apWords.push_back(nullptr);
    dup2(iOut, STDOUT_FILENO);
    dup2(iOut, STDERR_FILENO);
    execvp(apWords[0], apWords.data());
    _exit(127);
}

/* The server chooses a number that is free and tells it on the descriptor. */
Desk::Desk(const std::string &screen, int iDpi)
{
    int aEnds[2];
    char caNumber[16] = "";

    if (pipe(aEnds) < 0)
        abort();
    const int iNowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    iServer = startProcess({"Xvfb", "-displayfd", std::to_string(aEnds[1]), "-screen", "0", screen,
                            "-dpi", std::to_string(iDpi), "-nolisten", "tcp"},
                           iNowhere);
    close(aEnds[1]);
    close(iNowhere);
    const ssize_t iRead = read(aEnds[0], caNumber, sizeof caNumber - 1);
    close(aEnds[0]);
    if (iRead > 0)
        name = ":" + std::to_string(atoi(caNumber));
    pDisplay = XOpenDisplay(name.c_str());
    EXPECT_NE(nullptr, pDisplay) << "no Xvfb";
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

void Desk::start(const Medium &medium, const std::vector<std::string> &more)
{
    std::vector<std::string> words = {medium.place + "/setup", "-noroot", "-dest", medium.dest};

    end(iProgram);
    words.insert(words.end(), more.begin(), more.end());
    out = medium.scratch / "printed";
    const int iOut = open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    iProgram = startProcess(words, iOut,
                            {"DISPLAY=" + name, "HOME=" + (medium.scratch / "home"), "USER=artist",
                             "LC_ALL=C.UTF-8", "XENVIRONMENT=/dev/null"});
    close(iOut);
}

bool Desk::startAtMainPage(const Medium &medium)
{
    if (!std::filesystem::exists(medium.place + "/SetupFiles"))
        writeFile(medium.place + "/SetupFiles/eula.txt", "Use it as you like.\n");
    start(medium);
    for (const char *pShell : {"dsWelcome", "dsEULA", "dsChangeDestination"})
        if (!press(pShell, pShell[2] == 'C' ? 1 : 0))
            return false;
    return window("dsMainDlg") != 0;
}

static pid_t childOf(pid_t iParent)
{
    const std::string number = std::to_string(iParent);

    return atoi(readFile("/proc/" + number + "/task/" + number + "/children").c_str());
}

pid_t Desk::stopAt(const std::string &shell)
{
    pid_t iChild = 0;

    (void)soon([&] { return isShown(shell) && (iChild = childOf(iProgram)) > 0; });
    EXPECT_TRUE(iChild > 0 && kill(-iChild, SIGSTOP) == 0) << printed();
    return iChild;
}

int Desk::status(int iSeconds)
{
    int iStatus = 0;

    if (!soon([&] { return waitpid(iProgram, &iStatus, WNOHANG) == iProgram; }, iSeconds))
        return -1;
    iProgram = -1;
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

/* ---- windows ---- */

static int ignoreError(Display *, XErrorEvent *)
{
    return 0; /* a window that has gone meanwhile */
}

static unsigned long findShell(Display *pDisplay, const std::string &shell)
{
    Window root = 0, parent = 0, found = 0;
    Window *aWindows = nullptr;
    unsigned iWindows = 0;
    const auto before = XSetErrorHandler(ignoreError);

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
    XSync(pDisplay, False);
    XSetErrorHandler(before);
    return found;
}

/* What the screen shows at a window's place, and where that is. */
struct Shot {
    Box place = {0, 0, 0, 0};
    std::vector<unsigned> pixels;

    unsigned at(int iX, int iY) const { return pixels[(size_t)(iY * place.iWidth + iX)]; }
};

static Shot take(Display *pDisplay, unsigned long window)
{
    Shot shot;
    XWindowAttributes info = {};
    Window child = 0;
    const auto before = XSetErrorHandler(ignoreError);
    const Window root = DefaultRootWindow(pDisplay);

    if (window && XGetWindowAttributes(pDisplay, window, &info) &&
        XTranslateCoordinates(pDisplay, window, root, 0, 0, &shot.place.iX, &shot.place.iY,
                              &child)) {
        const std::unique_ptr<XImage, int (*)(XImage *)> image(
            XGetImage(pDisplay, window, 0, 0, (unsigned)info.width, (unsigned)info.height,
                      AllPlanes, ZPixmap),
            [](XImage *pImage) { return pImage ? XDestroyImage(pImage) : 0; });
        if (image && image->bits_per_pixel == 32) {
            shot.place.iWidth = info.width;
            shot.place.iHeight = info.height;
            shot.pixels.resize((size_t)(info.width * info.height));
            for (int iY = 0; iY < info.height; iY++)
                memcpy(&shot.pixels[(size_t)(iY * info.width)],
                       image->data + iY * image->bytes_per_line, (size_t)info.width * 4);
            for (unsigned &pixel : shot.pixels)
                pixel &= 0xffffff;
        }
    }
    XSync(pDisplay, False);
    XSetErrorHandler(before);
    return shot;
}

/* At rest: drawn, and the same twice. */
unsigned long Desk::window(const std::string &shell, int iSeconds)
{
    unsigned long found = 0;
    std::vector<unsigned> last;

    const bool bCame = soon(
        [&] {
            found = findShell(pDisplay, shell);
            Shot shot = take(pDisplay, found);
            const bool bRests = !shot.pixels.empty() && shot.pixels == last;
            last = std::move(shot.pixels);
            usleep(30000);
            return bRests;
        },
        iSeconds);
    return bCame ? found : 0;
}

bool Desk::isShown(const std::string &shell)
{
    return findShell(pDisplay, shell) != 0;
}

bool Desk::isGone(const std::string &shell, int iSeconds)
{
    return soon([&] { return !isShown(shell); }, iSeconds);
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

/* The bounding box of what hangs together with a pixel of its colour, which is marked as seen. */
static Box spread(const Shot &shot, std::vector<bool> &seen, int iX, int iY)
{
    const unsigned colour = shot.at(iX, iY);
    int iLeft = iX, iRight = iX, iTop = iY, iBottom = iY;
    std::vector<std::pair<int, int>> left = {{iX, iY}};

    while (!left.empty()) {
        const auto [iAtX, iAtY] = left.back();
        left.pop_back();
        if (iAtX < 0 || iAtY < 0 || iAtX >= shot.place.iWidth || iAtY >= shot.place.iHeight)
            continue;
        const size_t index = (size_t)(iAtY * shot.place.iWidth + iAtX);
        if (seen[index] || shot.pixels[index] != colour)
            continue;
        seen[index] = true;
        iLeft = std::min(iLeft, iAtX), iRight = std::max(iRight, iAtX);
        iTop = std::min(iTop, iAtY), iBottom = std::max(iBottom, iAtY);
        for (const auto &step : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}})
            left.push_back({iAtX + step.first, iAtY + step.second});
    }
    return {shot.place.iX + iLeft, shot.place.iY + iTop, iRight - iLeft + 1, iBottom - iTop + 1};
}

/* The areas of a colour whose sizes fit, row by row; rows are things whose middles are close. */
static std::vector<Box> areas(const Shot &shot, unsigned colour, const Box &least, const Box &most)
{
    std::vector<bool> seen(shot.pixels.size());
    std::vector<Box> found;
    const auto rowOf = [](const Box &box) { return (box.iY + box.iHeight / 2) / 16; };

    for (int iY = 0; iY < shot.place.iHeight; iY++)
        for (int iX = 0; iX < shot.place.iWidth; iX++)
            if (shot.at(iX, iY) == colour && !seen[(size_t)(iY * shot.place.iWidth + iX)]) {
                const Box box = spread(shot, seen, iX, iY);
                if (box.iWidth >= least.iWidth && box.iHeight >= least.iHeight &&
                    box.iWidth <= most.iWidth && box.iHeight <= most.iHeight)
                    found.push_back(box);
            }
    std::stable_sort(found.begin(), found.end(), [&](const Box &a, const Box &b) {
        return rowOf(a) != rowOf(b) ? rowOf(a) < rowOf(b) : a.iX < b.iX;
    });
    return found;
}

std::vector<Box> Desk::buttons(const std::string &shell)
{
    return areas(take(pDisplay, window(shell)), BUTTON_COLOUR, {0, 0, 28, 18}, {0, 0, 400, 160});
}

std::vector<Box> Desk::checks(const std::string &shell)
{
    return areas(take(pDisplay, window(shell)), CHECK_BORDER, {0, 0, 10, 10}, {0, 0, 30, 30});
}

bool Desk::showsButtons(const std::string &shell, size_t iCount)
{
    return soon([&] { return isShown(shell) && buttons(shell).size() == iCount; });
}

std::string Desk::marks(const std::string &shell)
{
    const Shot shot = take(pDisplay, window(shell));
    std::string marks;

    for (const Box &box : areas(shot, CHECK_BORDER, {0, 0, 10, 10}, {0, 0, 30, 30})) {
        const unsigned corner = shot.at(box.iX - shot.place.iX + 2, box.iY - shot.place.iY + 2);
        marks += corner == CHECK_EMPTY ? '-' : 'x';
    }
    return marks;
}

/* ---- the pointer and the keyboard ---- */

static void doIt(const Desk &desk, const std::string &command)
{
    EXPECT_EQ(0, system(("DISPLAY=" + desk.name + " xdotool " + command).c_str())) << command;
}

void Desk::click(int iX, int iY)
{
    doIt(*this, "mousemove " + std::to_string(iX) + " " + std::to_string(iY) +
                    " mousedown 1 mouseup 1"); /* "click" takes ten times as long */
}

static bool clickOne(Desk &desk, const std::vector<Box> &boxes, int iNumber)
{
    const int iIndex = iNumber < 0 ? (int)boxes.size() + iNumber : iNumber;

    if (iIndex < 0 || iIndex >= (int)boxes.size()) {
        ADD_FAILURE() << "only " << boxes.size() << " to click at, not " << iNumber;
        return false;
    }
    const Box &box = boxes[(size_t)iIndex];
    desk.click(box.iX + box.iWidth / 2, box.iY + box.iHeight / 2);
    return true;
}

bool Desk::press(const std::string &shell, int iButton)
{
    SCOPED_TRACE(shell);
    return clickOne(*this, buttons(shell), iButton);
}

bool Desk::check(const std::string &shell, int iBox)
{
    SCOPED_TRACE(shell);
    return clickOne(*this, checks(shell), iBox);
}

static bool isViewable(Display *pDisplay, unsigned long window)
{
    XWindowAttributes info = {};
    const auto before = XSetErrorHandler(ignoreError);
    const bool bThere = XGetWindowAttributes(pDisplay, window, &info) != 0;

    XSync(pDisplay, False);
    XSetErrorHandler(before);
    return bThere && info.map_state == IsViewable;
}

bool Desk::leave(const std::string &shell, int iButton)
{
    const unsigned long left = window(shell);

    return press(shell, iButton) && soon([&] { return !isViewable(pDisplay, left); });
}

static void giveKeyboard(Desk &desk, const std::string &shell)
{
    const unsigned long given = desk.window(shell);

    if (!given)
        return;
    /* Where the pointer is must not matter: it is out of the way. */
    doIt(desk, "mousemove " + std::to_string(DisplayWidth(desk.pDisplay, 0) - 1) + " " +
                   std::to_string(DisplayHeight(desk.pDisplay, 0) - 1));
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
    bool bFirst = true;

    giveKeyboard(*this, shell);
    for (std::string key; words >> key; bFirst = false) {
        if (!bFirst) {
            usleep(40000);
            (void)window(shell);
        }
        doIt(*this, "key --delay 10 " + key);
    }
}

void Desk::type(const std::string &shell, const std::string &text)
{
    giveKeyboard(*this, shell);
    doIt(*this, "type --delay 4 '" + text + "'");
}

void Desk::picture(const std::string &shell, const std::string &name_)
{
    const unsigned long shown = window(shell);
    const std::string directory = SETUP_BUILD_DIR "/pictures";

    ASSERT_NE(0u, shown) << shell;
    std::filesystem::create_directories(directory);
    must("import -display " + name + " -window " + std::to_string(shown) + " " + directory + "/" +
         name_ + ".png");
}
