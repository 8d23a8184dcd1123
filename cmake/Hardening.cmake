# Makes faults harder to exploit, as the program parses foreign files and replies. Debug builds and
# sanitizers do without: fortified functions need the optimizer, and sanitizers have their own.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

set(optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "QUILLET_HAS${flag}" known)  # some processors lack the last
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        add_compile_options($<${optimized}:${flag}>)
    endif()
endforeach()
add_compile_options($<${optimized}:-U_FORTIFY_SOURCE> $<${optimized}:-D_FORTIFY_SOURCE=3>)
add_link_options($<${optimized}:LINKER:-z,relro,-z,now>)
