# The check's side of the build: declarations in place of the system's headers, lists of exports in
# place of its libraries, and a stand-in for the one Swift file.
target_include_directories(vantor_platform_darwin SYSTEM PUBLIC
    ${CMAKE_CURRENT_SOURCE_DIR}/check/include)

# The compiler says the language twice.
target_compile_options(vantor_platform_darwin PRIVATE
    $<$<COMPILE_LANGUAGE:OBJCXX>:-Wno-unused-command-line-argument>)

add_library(vantor_darwin_swift STATIC check/swift_stand_in.cpp)
target_include_directories(vantor_darwin_swift PRIVATE ${PROJECT_SOURCE_DIR})

set(exports ${CMAKE_BINARY_DIR}/exports)
set(stub_maker ${CMAKE_CURRENT_SOURCE_DIR}/check/make_stubs.py)
set(export_list ${CMAKE_CURRENT_SOURCE_DIR}/check/exports.txt)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_custom_command(OUTPUT ${exports}/stamp
    COMMAND Python3::Interpreter ${stub_maker} ${export_list} ${exports}
    COMMAND ${CMAKE_COMMAND} -E touch ${exports}/stamp
    DEPENDS ${stub_maker} ${export_list}
    COMMENT "Writing the lists of the system's exports"
    VERBATIM)
add_custom_target(darwin_exports DEPENDS ${exports}/stamp)
add_dependencies(vantor_platform_darwin darwin_exports)
target_link_options(vantor_platform_darwin PUBLIC -F${exports})
target_link_options(vantor_platform_darwin PUBLIC ${exports}/libobjc.tbd)

# vantor_check_link(TARGET)
# macOS has the C++ library as a shared one. Its exports are taken to be what the program asks of
# it; every other symbol must be in the lists.
set(VANTOR_STUB_MAKER ${Python3_EXECUTABLE} ${stub_maker} CACHE INTERNAL "")
function(vantor_check_link TARGET)
    set(library ${CMAKE_BINARY_DIR}/exports/${TARGET}/libc++.1.tbd)
    add_custom_command(TARGET ${TARGET} PRE_LINK
        COMMAND ${VANTOR_STUB_MAKER} --cxx ${CMAKE_BINARY_DIR} ${library}
        VERBATIM)
    # Not as a library, which would have to be there before the link step writes it.
    target_link_options(${TARGET} PRIVATE ${library})
endfunction()
