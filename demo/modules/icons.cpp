/* The pictures of the sample product's dialogs: XPM arrays that setup looks up by name. */
extern "C" {
extern const char *const kivo_typical[];
extern const char *const kivo_custom[];
extern const char *const kivo_other[];
extern const char *const kivo_compact[];
extern const char *const kivo_developer[];

#include "../icons/compact.xpm"
#include "../icons/custom.xpm"
#include "../icons/developer.xpm"
#include "../icons/other.xpm"
#include "../icons/typical.xpm"
}
