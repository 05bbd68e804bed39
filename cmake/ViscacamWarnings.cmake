# One interface target carries the warning and sanitizer flags of everything that we compile.
add_library(viscacam_warnings INTERFACE)
target_compile_options(viscacam_warnings INTERFACE
    -Wall -Wextra -Wshadow -Wformat=2 -Wundef -Wcast-qual -Wpointer-arith
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
if(VISCACAM_WERROR)
    target_compile_options(viscacam_warnings INTERFACE -Werror)
endif()
if(VISCACAM_SANITIZE)
    add_compile_options(-fsanitize=${VISCACAM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VISCACAM_SANITIZE})
endif()
