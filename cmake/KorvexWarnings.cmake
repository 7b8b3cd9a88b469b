# One warning policy for every target of the project.
function(korvex_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow=local -Wnon-virtual-dtor)
    if(KORVEX_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
