/* Every declaration of the library must compile as C too. */
#include "zdaapi.h"
#include "zdasim_control.h"

int zdaapi_headers_compile_as_c(void);

int zdaapi_headers_compile_as_c(void) {
    return (int)sizeof(api_VVObj_t);
}
