/* A picture as a medium carries it, partly transparent. */
const char *const tinyPicture[] = {"5 3 2 1", "  c None", "# c #ff0000", "#####", "#   #", "#####"};
