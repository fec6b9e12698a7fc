// Names that other libraries' headers put into a program, among them curses, jpeglib, X11 and ODBC. A host
// may have included them before ours.
#pragma once

#define TRUE 1
#define FALSE 0
#define True 1
#define False 0
#define None 0L
#define Success 0
#define Always 2
#define Status int
#define S_OK 0L
#define E_FAIL 0x80004005L
#define SUCCEEDED(result) ((result) >= 0)
#define FAILED(result) ((result) < 0)

typedef unsigned char BOOL;
typedef unsigned char BYTE;
typedef unsigned int DWORD;
typedef unsigned short WCHAR;
typedef long HRESULT;
typedef void* HANDLE;
typedef struct {
    unsigned int low, high;
} FILETIME;
typedef struct {
    unsigned char bytes[16];
} GUID;
typedef enum { Done } Result;
union LARGE_INTEGER;
struct IUnknown;
struct IStream;
class CImage;
template <class T>
class RefPtr;
namespace detail {}
