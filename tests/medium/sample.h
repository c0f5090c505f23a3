/* A medium that check has nothing to say of, for tests that spoil it. */
#ifndef OVINST_TESTS_MEDIUM_SAMPLE_H
#define OVINST_TESTS_MEDIUM_SAMPLE_H

#include "support.h"

#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

/* A member of an archive: its type is a letter of tar's ("0" file, "1" hard link, "2" symbolic
 * link, "3" device, "5" directory); text is what it holds or leads to. */
struct SampleMember {
    std::string name;
    char cType;
    std::string text;
};

inline std::string tarBlock(const SampleMember &member)
{
    const bool bFile = member.cType == '0';
    std::string block(512, '\0');
    char caSize[12];

    block.replace(0, member.name.size(), member.name);
    block.replace(100, 7, "0000755");
    block.replace(108, 7, "0000000");
    block.replace(116, 7, "0000000");
    (void)snprintf(caSize, sizeof(caSize), "%011zo", bFile ? member.text.size() : 0);
    block.replace(124, 11, caSize);
    block.replace(136, 11, "00000000000");
    block.replace(148, 8, "        ");
    block[156] = member.cType;
    if (!bFile)
        block.replace(157, member.text.size(), member.text);
    block.replace(257, 8, std::string("ustar\00000", 8));
    unsigned iSum = 0;
    for (char c : block)
        iSum += static_cast<unsigned char>(c);
    (void)snprintf(caSize, sizeof(caSize), "%06o", iSum);
    block.replace(148, 7, std::string(caSize) + '\0');
    if (bFile)
        block += member.text + std::string((512 - member.text.size() % 512) % 512, '\0');
    return block;
}

inline std::string tarOf(const std::vector<SampleMember> &members)
{
    std::string all;

    for (const SampleMember &member : members)
        all += tarBlock(member);
    return all + std::string(1024, '\0');
}

inline const std::vector<SampleMember> s_sampleMembers = {
    {"share/", '5', ""},
    {"share/one", '0', "1234"},
    {"share/two", '0', "12345"},
};

inline const char s_caSample[] = R"(SetupVersion 1
ProductName Orvane
ProductVersion 3.5
ProductDirectory orvane
LogFile setup.log
Package "core" "Program"
Mkdir "Application" 0755
Copy "Files/kivo" "Application/kivo" 5 0755
Untar "Archives/a.tar" 9 "share/" 0 "share/one" 4 "share/two" 5
SoftLink "Application" "kivo" "soft"
HardLink "Application" "kivo" "hard"
Function "tellAll" "engineModule.so" "x"
Package "more" "More"
UntarZ "Archives/b.tar.bz2" 3 "extra/" 0 "extra/three" 3
Suite "Program" core
Suite "More" more
ConfigBegin
1 MainDlg "Orvane" "Choose" "" 10 20
10 Suite "Program" "The program" "engineModule.so,tellAll" 1
20 CusDlg "Custom" "Choose" "" 0 21 22
21 Suite "Program" "The program" "" 1
22 Suite "More" "More of it" "" 0
2 CusDlg "Maintain" "Choose" "" 0 21 22
3 CusDlg "All" "All" "" 0 21 22
ConfigEnd
)";

/* The medium in a directory of its own. */
struct Sample {
    Scratch scratch;

    Sample()
    {
        write("cdinst.dat", s_caSample);
        write("Files/kivo", "12345");
        write("Archives/a.tar", tarOf(s_sampleMembers));
        write("Archives/b.tar", tarOf({{"extra/", '5', ""}, {"extra/three", '0', "123"}}));
        if (system(("bzip2 " + at("Archives/b.tar")).c_str()) != 0)
            abort();
        write("SetupFiles/eula.txt", "licence");
        write("Setup/Help/index.html", "help");
        for (const auto &entry : fs::directory_iterator(TEST_MODULE_DIR))
            fs::create_symlink(entry.path(),
                               at("SetupFiles") + "/" + entry.path().filename().string());
    }
    std::string at(const std::string &name) const { return scratch / name; }
    void write(const std::string &name, const std::string &text) const
    {
        writeFile(at(name), text);
    }
};

/* The sample's description with one line in place of another (from 1; 0 for behind the last); a
 * null one is left out. */
inline std::string sampleWith(int iLine, const char *pLine)
{
    std::istringstream lines(s_caSample);
    std::string text;
    std::string line;

    for (int i = 1; std::getline(lines, line); i++) {
        if (i != iLine)
            text += line + "\n";
        else if (pLine)
            text += std::string(pLine) + "\n";
    }
    return iLine == 0 ? text + pLine + "\n" : text;
}

#endif
