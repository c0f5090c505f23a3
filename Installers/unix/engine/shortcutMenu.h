/* The writer of the window manager's tool-chest menus. Nothing calls it today. */
#ifndef OVINST_ENGINE_SHORTCUTMENU_H
#define OVINST_ENGINE_SHORTCUTMENU_H

#include <string>
#include <vector>

/* A shortcut to be put into a menu file. */
struct OV_Shortcut {
    std::vector<std::string> path; /* the menus from "ToolChest" down to the one it is in */
    std::string label;
    std::string command;
};

/* Takes a menu path such as "ToolChest/Graphics/Tools" apart. 0, or -1 when it has more than 20
 * names or one of more than 19 characters. */
int OV_instSplitMenuPath(const char *pMenuPath, std::vector<std::string> *pPath);

/* The text of a menu file with the shortcut put into it: the old lines as they are to be copied,
 * and in *pAppended the menus that go behind them. */
std::string OV_instChangeMenus(const std::string &menus, const OV_Shortcut *pShortcut,
                               std::string *pAppended);

/* Puts a shortcut into the menu file ".shortcuts" of a directory, which need not be there yet. In
 * the command's format "%s" stands for that directory and "%%" for a percent sign. The file is
 * replaced as a whole or stays as it is, and keeps owner and mode. 0, or 1 with the reason on
 * standard error. */
int install_shortcut(const char *pMenuPath, const char *pLabel, const char *pCommandFormat,
                     const char *pDirectory);

#endif
