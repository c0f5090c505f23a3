#include "medium/moduleFile.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gelf.h>
#include <glob.h>
#include <set>
#include <sys/stat.h>

#include "ut/owned.h"

static const char s_caVersionName[] = "ModuleVersion";

struct ElfEnded {
    void operator()(Elf *pElf) const { (void)elf_end(pElf); } /* it was only read */
};
using OwnedElf = std::unique_ptr<Elf, ElfEnded>;

/* ---- one file ---- */

/* What this program itself is: what it can load has the same. */
static const GElf_Ehdr *ownHeader()
{
    static GElf_Ehdr s_header = {};
    static bool s_bRead = false;

    if (s_bRead)
        return &s_header;
    s_bRead = true;
    OwnedFd file(open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    OwnedElf elf(file.iFd < 0 ? nullptr : elf_begin(file.iFd, ELF_C_READ, nullptr));
    if (elf)
        (void)gelf_getehdr(elf.get(), &s_header); /* stays empty: then every machine will do */
    return &s_header;
}

/* Empty for a shared object of this machine. */
static std::string judge(Elf *pElf, GElf_Ehdr *pHeader)
{
    const GElf_Ehdr *pOwn = ownHeader();

    if (elf_kind(pElf) != ELF_K_ELF || !gelf_getehdr(pElf, pHeader))
        return "it is no shared object";
    if (pOwn->e_machine && (pHeader->e_machine != pOwn->e_machine ||
                            pHeader->e_ident[EI_CLASS] != pOwn->e_ident[EI_CLASS] ||
                            pHeader->e_ident[EI_DATA] != pOwn->e_ident[EI_DATA]))
        return "it is for another machine";
    if (pHeader->e_type != ET_DYN)
        return "it is no shared object";
    return "";
}

/* The eight bytes at an address of the object, as one of its sections has them. */
static bool readDouble(Elf *pElf, GElf_Addr lAddress, double *pdValue)
{
    for (Elf_Scn *pSection = nullptr; (pSection = elf_nextscn(pElf, pSection));) {
        GElf_Shdr header;
        if (!gelf_getshdr(pSection, &header) || !(header.sh_flags & SHF_ALLOC) ||
            (header.sh_flags & SHF_TLS) || lAddress < header.sh_addr ||
            lAddress - header.sh_addr > header.sh_size ||
            header.sh_size - (lAddress - header.sh_addr) < sizeof(*pdValue))
            continue;
        *pdValue = 0;
        if (header.sh_type == SHT_NOBITS)
            return true;
        const Elf_Data *pData = elf_rawdata(pSection, nullptr);
        const size_t iOffset = static_cast<size_t>(lAddress - header.sh_addr);
        if (!pData || !pData->d_buf || pData->d_size < iOffset + sizeof(*pdValue))
            return false;
        memcpy(pdValue, static_cast<const char *>(pData->d_buf) + iOffset, sizeof(*pdValue));
        return true;
    }
    return false;
}

static void readSymbols(Elf *pElf, Elf_Scn *pSection, const GElf_Shdr *pHeader,
                        OV_SharedObject *pObject)
{
    Elf_Data *pData = elf_getdata(pSection, nullptr);
    const size_t iCount = pData && pHeader->sh_entsize ? pData->d_size / pHeader->sh_entsize : 0;

    for (size_t i = 0; i < iCount; i++) {
        GElf_Sym symbol;
        if (!gelf_getsym(pData, static_cast<int>(i), &symbol))
            break;
        const int iBinding = GELF_ST_BIND(symbol.st_info);
        const char *pName = elf_strptr(pElf, pHeader->sh_link, symbol.st_name);
        if (!pName || symbol.st_shndx == SHN_UNDEF || iBinding == STB_LOCAL)
            continue;
        pObject->symbols.insert(pName);
        if (strcmp(pName, s_caVersionName) == 0)
            pObject->bVersion = readDouble(pElf, symbol.st_value, &pObject->dVersion);
    }
}

static void addPlaces(const char *pPlaces, const std::string &directory, OV_SharedObject *pObject)
{
    while (pPlaces && *pPlaces) {
        const char *pEnd = strchrnul(pPlaces, ':');
        std::string place(pPlaces, pEnd);
        for (const char *pOrigin : {"$ORIGIN", "${ORIGIN}"})
            if (place.compare(0, strlen(pOrigin), pOrigin) == 0)
                place.replace(0, strlen(pOrigin), directory);
        if (!place.empty())
            pObject->places.push_back(place);
        pPlaces = *pEnd ? pEnd + 1 : pEnd;
    }
}

/* False for a program, which is made like a library but is none. */
static bool readDynamic(Elf *pElf, Elf_Scn *pSection, const GElf_Shdr *pHeader,
                        const std::string &directory, OV_SharedObject *pObject)
{
    Elf_Data *pData = elf_getdata(pSection, nullptr);
    GElf_Dyn entry;

    for (int i = 0; pData && gelf_getdyn(pData, i, &entry) && entry.d_tag != DT_NULL; i++) {
        const char *pText = elf_strptr(pElf, pHeader->sh_link, entry.d_un.d_val);
        if (entry.d_tag == DT_NEEDED && pText)
            pObject->needed.push_back(pText);
        else if (entry.d_tag == DT_RPATH || entry.d_tag == DT_RUNPATH)
            addPlaces(pText, directory, pObject);
        else if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_PIE))
            return false;
    }
    return true;
}

static std::string readObject(Elf *pElf, const std::string &directory, OV_SharedObject *pObject)
{
    for (Elf_Scn *pSection = nullptr; (pSection = elf_nextscn(pElf, pSection));) {
        GElf_Shdr header;
        if (!gelf_getshdr(pSection, &header))
            continue;
        if (header.sh_type == SHT_DYNSYM)
            readSymbols(pElf, pSection, &header, pObject);
        if (header.sh_type == SHT_DYNAMIC &&
            !readDynamic(pElf, pSection, &header, directory, pObject))
            return "it is a program";
    }
    return "";
}

static std::unique_ptr<OV_SharedObject> readFile(const std::string &path, std::string *pReason)
{
    auto object = std::make_unique<OV_SharedObject>();
    GElf_Ehdr header = {};
    struct stat info;

    if (stat(path.c_str(), &info) < 0 || !S_ISREG(info.st_mode)) { /* a FIFO would be waited for */
        *pReason = path.empty() || errno == ENOENT ? "it is not there" : "it is no file";
        return nullptr;
    }
    OwnedFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.iFd < 0) {
        *pReason = strerror(errno);
        return nullptr;
    }
    OwnedElf elf(elf_begin(file.iFd, ELF_C_READ, nullptr));
    *pReason = elf ? judge(elf.get(), &header) : "it is no shared object";
    if (pReason->empty())
        *pReason = readObject(elf.get(), path.substr(0, path.rfind('/')), object.get());
    if (!pReason->empty())
        return nullptr;
    return object;
}

const OV_SharedObject *OV_mediumOpenObject(OV_ModuleFiles *pFiles, const std::string &path,
                                           std::string *pReason)
{
    if (!pFiles->objects.count(path)) {
        (void)elf_version(EV_CURRENT); /* this library's own */
        pFiles->objects[path] = readFile(path, &pFiles->reasons[path]);
    }
    *pReason = pFiles->reasons[path];
    return pFiles->objects[path].get();
}

/* ---- the libraries ---- */

static void readPlaces(const std::string &pattern, std::vector<std::string> *pPlaces, int iDepth)
{
    glob_t found = {};

    if (glob(pattern.c_str(), 0, nullptr, &found) == 0 && iDepth < 8)
        for (size_t i = 0; i < found.gl_pathc; i++) {
            std::ifstream file(found.gl_pathv[i]);
            std::string line;
            while (std::getline(file, line)) {
                if (line.compare(0, 8, "include ") == 0)
                    readPlaces((line[8] == '/' ? "" : "/etc/") + line.substr(8), pPlaces,
                               iDepth + 1);
                else if (!line.empty() && line[0] == '/')
                    pPlaces->push_back(line);
            }
        }
    globfree(&found);
}

static const std::vector<std::string> &libraryPlaces(OV_ModuleFiles *pFiles)
{
    if (pFiles->libraryPlaces.empty()) {
        readPlaces("/etc/ld.so.conf", &pFiles->libraryPlaces, 0);
        for (const char *pPlace : {"/lib64", "/usr/lib64", "/lib", "/usr/lib"})
            pFiles->libraryPlaces.push_back(pPlace);
    }
    return pFiles->libraryPlaces;
}

/* The library's path, or empty. */
static std::string findLibrary(OV_ModuleFiles *pFiles, const std::string &name,
                               const OV_SharedObject *pNeeds)
{
    std::string reason;

    if (name.find('/') != std::string::npos)
        return OV_mediumOpenObject(pFiles, name, &reason) ? name : "";
    std::vector<std::string> places = pNeeds->places;
    const auto &others = libraryPlaces(pFiles);
    places.insert(places.end(), others.begin(), others.end());
    for (const std::string &place : places)
        if (OV_mediumOpenObject(pFiles, place + "/" + name, &reason))
            return place + "/" + name;
    return "";
}

/* The first object, in the order of the loader, of which wanted is true; null for none. */
static const OV_SharedObject *
search(OV_ModuleFiles *pFiles, const std::string &path,
       const std::function<bool(const OV_SharedObject *pObject)> &wanted)
{
    std::deque<std::string> waiting = {path};
    std::set<std::string> seen = {path};
    std::string reason;

    while (!waiting.empty()) {
        const OV_SharedObject *pObject = OV_mediumOpenObject(pFiles, waiting.front(), &reason);
        waiting.pop_front();
        if (!pObject)
            continue;
        if (wanted(pObject))
            return pObject;
        for (const std::string &name : pObject->needed) {
            const std::string library = findLibrary(pFiles, name, pObject);
            if (!library.empty() && seen.insert(library).second)
                waiting.push_back(library);
        }
    }
    return nullptr;
}

bool OV_mediumHasSymbol(OV_ModuleFiles *pFiles, const std::string &path, const std::string &symbol)
{
    return search(pFiles, path, [&symbol](const OV_SharedObject *pObject) {
               return pObject->symbols.count(symbol) > 0;
           }) != nullptr;
}

bool OV_mediumModuleVersion(OV_ModuleFiles *pFiles, const std::string &path, double *pdVersion)
{
    const OV_SharedObject *pObject = search(pFiles, path, [](const OV_SharedObject *pLooked) {
        return pLooked->symbols.count(s_caVersionName) > 0;
    });

    if (!pObject || !pObject->bVersion)
        return false;
    *pdVersion = pObject->dVersion;
    return true;
}
