# What an installed copy carries besides the programs: the file type of
# recordings, the AppStream metadata, man pages, the package's copyright and
# changelog; and the Debian package built from the same install rules
# (`make package`, or `cmake --build build --target package`).
#
# The package's version, release date and maintainer come from the top entry
# of data/deb/changelog, so the package, its changelog and the AppStream
# release always agree.

set(lv_changelog ${PROJECT_SOURCE_DIR}/data/deb/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${lv_changelog})
file(STRINGS ${lv_changelog} lv_changelog_lines)
list(GET lv_changelog_lines 0 lv_changelog_head)
if(NOT lv_changelog_head MATCHES "^lv-analog \\(([0-9.]+)-([0-9]+)\\)")
    message(FATAL_ERROR "data/deb/changelog: the first line names no lv-analog version")
endif()
set(lv_deb_upstream ${CMAKE_MATCH_1})
set(lv_deb_release ${CMAKE_MATCH_2})
if(NOT lv_deb_upstream STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "data/deb/changelog starts at ${lv_deb_upstream}, the project is "
                        "${PROJECT_VERSION}: add a changelog entry for the new version")
endif()
foreach(line ${lv_changelog_lines})
    if(line MATCHES "^ -- (.+>)  [A-Z][a-z][a-z], ([0-9]+) ([A-Z][a-z][a-z]) ([0-9]+) ")
        set(lv_deb_maintainer ${CMAKE_MATCH_1})
        set(day ${CMAKE_MATCH_2})
        set(month_name ${CMAKE_MATCH_3})
        set(year ${CMAKE_MATCH_4})
        break()
    endif()
endforeach()
if(NOT lv_deb_maintainer)
    message(FATAL_ERROR "data/deb/changelog: the first entry has no ' -- name <mail>  date' line")
endif()
set(months Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
list(FIND months ${month_name} month)
math(EXPR month "${month} + 1")
string(LENGTH "${day}" day_digits)
if(day_digits EQUAL 1)
    set(day "0${day}")
endif()
if(month LESS 10)
    set(month "0${month}")
endif()
set(LV_RELEASE_DATE "${year}-${month}-${day}")
# The man pages carry the release's date, not the day they were built.
execute_process(COMMAND date -u -d ${LV_RELEASE_DATE} +%s OUTPUT_VARIABLE lv_release_epoch
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

# Recordings open in the program from a file manager.
install(FILES data/lv_Analog.mime.xml DESTINATION share/mime/packages RENAME lv_Analog.xml)

configure_file(data/lv_Analog.metainfo.xml ${CMAKE_BINARY_DIR}/lv_Analog.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/lv_Analog.metainfo.xml DESTINATION share/metainfo)

# Debian keeps these compressed, without a time stamp in the gzip header.
find_program(GZIP_PROGRAM gzip REQUIRED)
set(lv_doc_dir ${CMAKE_BINARY_DIR}/doc)
add_custom_command(
    OUTPUT ${lv_doc_dir}/changelog.Debian.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${lv_doc_dir}
    COMMAND ${GZIP_PROGRAM} -9nc ${lv_changelog} > ${lv_doc_dir}/changelog.Debian.gz
    DEPENDS ${lv_changelog}
    VERBATIM)
add_custom_target(lv_changelog_gz ALL DEPENDS ${lv_doc_dir}/changelog.Debian.gz)
install(FILES data/deb/copyright ${lv_doc_dir}/changelog.Debian.gz DESTINATION share/doc/lv-analog)

# Man pages made from each program's own --help, so they cannot drift from it.
# In a sanitizer build, Qt's own allocations at exit must not fail the page.
find_program(HELP2MAN_PROGRAM help2man)
if(LV_WITH_QT AND HELP2MAN_PROGRAM)
    set(lv_man_dir ${CMAKE_BINARY_DIR}/man)
    set(lv_man_pages)
    foreach(entry
            "lv_Analog|display and recorder for the lv3 meter"
            "lvdtool|read, convert and make lv3 meter recordings"
            "lv3sim|virtual lv3 meter on a pseudo-terminal")
        string(REPLACE "|" ";" entry "${entry}")
        list(GET entry 0 program)
        list(GET entry 1 summary)
        set(page ${lv_man_dir}/${program}.1)
        add_custom_command(
            OUTPUT ${page}.gz
            COMMAND ${CMAKE_COMMAND} -E make_directory ${lv_man_dir}
            COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0
                    SOURCE_DATE_EPOCH=${lv_release_epoch}
                    ${HELP2MAN_PROGRAM} --no-info --section=1
                    --version-string=${PROJECT_VERSION} --name=${summary}
                    --output=${page} $<TARGET_FILE:${program}>
            COMMAND ${GZIP_PROGRAM} -9nf ${page}
            DEPENDS ${program}
            COMMENT "Making the man page of ${program}"
            VERBATIM)
        list(APPEND lv_man_pages ${page}.gz)
    endforeach()
    add_custom_target(lv_man_pages ALL DEPENDS ${lv_man_pages})
    install(FILES ${lv_man_pages} DESTINATION share/man/man1)
elseif(LV_WITH_QT)
    message(STATUS "help2man not found: no man pages (scripts/install-deps.sh installs it)")
endif()

# The Debian package. Shared libraries the programs link are found by
# dpkg-shlibdeps; what is loaded at run time without being linked is named
# here. Watched on a live window, a playback and a recording with sound (Qt
# 6.4, QT_DEBUG_PLUGINS=1 and strace): the xcb or offscreen platform plugin,
# the compose input context and the gif/ico/jpeg image formats, all shipped in
# libqt6gui6, which is linked; the xcb plugin then dlopens libXcursor, which
# nothing depends on. The window's icon is an SVG, drawn by the SVG image
# plugin of libqt6svg6, which is loaded and not linked. Sound goes through libpulse, linked by Qt Multimedia;
# its media plugins (GStreamer, FFmpeg) are never loaded, as nothing here uses
# QMediaPlayer. A sound server is recommended: without one the program keeps
# time on its silent placeholder track and records no sound.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lv-analog)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${lv_deb_release})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${lv_deb_maintainer}")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libxcursor1, libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pulseaudio | pipewire-pulse")
# CPack indents the lines after the first and marks the empty one.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "display and recorder for the lv3 meter
lv_Analog shows the readings the lv3 meter streams over a USB-serial link
as an analogue needle with its Base and BD readouts, sensitivity knob,
lamp, running chart and clock. It records sessions with the room's sound,
plays them back in step with that sound, and calibrates the meter's dial.

The package also holds lv3sim, a virtual meter on a pseudo-terminal, and
lvdtool, which reads, converts and makes recordings on the command line.")
include(CPack)
