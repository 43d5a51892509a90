# What the compiler, the linker and the processor can do against a fault that is used by others.
add_compile_options(-fstack-protector-strong -fstack-clash-protection)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
    # The linker marks a program for it only where the C library's start files are marked, and Debian's
    # are not (readelf -n Scrt1.o): there the instructions are in place and not yet enforced.
    add_compile_options(-fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    add_compile_options(-mbranch-protection=standard)
endif()
# It needs optimisation; distributions define it themselves, each its own level.
add_compile_options($<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>)
# All that the program needs is found at its start, and can then no longer be changed.
add_link_options(-Wl,-z,relro,-z,now)
