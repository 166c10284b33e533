# How libraries are put in place: shared ones without what a debugger wants, a pkg-config file for
# each, and one CMake package for all.
include(CMakePackageConfigHelpers)
option(TESSERAE_INSTALL_STRIPPED "Install without what only a debugger wants" ON)
set(tesseraePackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/Tesserae)

# tesserae_install_shared(TARGET): stripped; what a debugger wants lies in .debug beside it, where
# gdb looks.
function(tesserae_install_shared target)
    install(TARGETS ${target} EXPORT TesseraeTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    if(NOT TESSERAE_INSTALL_STRIPPED OR NOT CMAKE_OBJCOPY OR NOT CMAKE_STRIP OR APPLE OR WIN32)
        return()
    endif()
    install(CODE "
        set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
        set(library \"\${folder}/$<TARGET_FILE_NAME:${target}>\")
        set(debug \"\${folder}/.debug/$<TARGET_FILE_NAME:${target}>.debug\")
        file(MAKE_DIRECTORY \"\${folder}/.debug\")
        message(STATUS \"Debug information: \${debug}\")
        execute_process(COMMAND \"${CMAKE_OBJCOPY}\" --only-keep-debug \"\${library}\" \"\${debug}\"
                        COMMAND_ERROR_IS_FATAL ANY)
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \"\${library}\"
                        COMMAND_ERROR_IS_FATAL ANY)
        execute_process(COMMAND \"${CMAKE_OBJCOPY}\" \"--add-gnu-debuglink=\${debug}\" \"\${library}\"
                        COMMAND_ERROR_IS_FATAL ANY)")
endfunction()

# tesserae_strip_installed(FILE [COMPONENT]): a program or plug-in that the calls before this one have
# installed, by its place below the prefix, loses what only a debugger wants.
function(tesserae_strip_installed file)
    if(NOT TESSERAE_INSTALL_STRIPPED OR NOT CMAKE_STRIP OR APPLE OR WIN32)
        return()
    endif()
    set(component)
    if(ARGC GREATER 1)
        set(component COMPONENT ${ARGV1})
    endif()
    install(CODE "
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${file}\" COMMAND_ERROR_IS_FATAL ANY)"
        ${component})
endfunction()

# tesserae_install_static(TARGET): without its debug information, which an archive can't have apart.
function(tesserae_install_static target)
    install(TARGETS ${target} EXPORT TesseraeTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    if(NOT TESSERAE_INSTALL_STRIPPED OR NOT CMAKE_STRIP OR APPLE OR WIN32)
        return()
    endif()
    install(CODE "
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:${target}>\"
            COMMAND_ERROR_IS_FATAL ANY)")
endfunction()

# tesserae_install_pkgconfig(NAME DESCRIPTION FOLDER): NAME is the library's too; its headers lie in
# FOLDER of the installed headers. The file finds the prefix from its own place, so that the
# installed tree may stand anywhere.
function(tesserae_install_pkgconfig name description folder)
    file(RELATIVE_PATH prefixFromPkgConfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
         ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" prefixFromPkgConfig ${prefixFromPkgConfig})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/tesserae.pc.in
                   ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# tesserae_install_package(): find_package(Tesserae) with the targets installed by the others.
function(tesserae_install_package)
    install(EXPORT TesseraeTargets NAMESPACE Tesserae:: DESTINATION ${tesseraePackageDir})
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TesseraeConfig.cmake.in
        ${PROJECT_BINARY_DIR}/TesseraeConfig.cmake INSTALL_DESTINATION ${tesseraePackageDir})
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesseraeConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/TesseraeConfig.cmake
                  ${PROJECT_BINARY_DIR}/TesseraeConfigVersion.cmake
            DESTINATION ${tesseraePackageDir})
endfunction()
