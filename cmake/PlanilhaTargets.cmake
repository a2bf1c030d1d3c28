# planilha_library(NAME [PLAIN] SOURCES ... [LINKS ...]): the static library of one folder of src.
# PLAIN marks the one library that must not know Qt.
function(planilha_library name)
  cmake_parse_arguments(ARG "PLAIN" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  if(ARG_PLAIN)
    target_link_libraries(${name} PRIVATE plain_flags PUBLIC ${ARG_LINKS})
  else()
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
    # moc reads the headers of the target: a new one is found without configuring by hand.
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS *.h)
    target_sources(${name} PRIVATE ${headers})
    target_link_libraries(${name} PRIVATE qt_flags PUBLIC ${ARG_LINKS})
  endif()
endfunction()

# planilha_test(NAME [X11] SOURCES ... [LINKS ...] [TIMEOUT seconds] [LABELS ...]): one QtTest executable under ctest, run
# on the offscreen platform, with a locale in which outside readers take names with accents. X11: under a virtual display
# of its own with a window manager, where xdotool types.
function(planilha_test name)
  cmake_parse_arguments(ARG "X11" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
  set(platform offscreen)
  set(under "")
  if(ARG_X11)
    set(platform xcb)
    set(under ${PROJECT_SOURCE_DIR}/demo/tour/sob_xvfb)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PRIVATE qt_flags Qt6::Test ${ARG_LINKS})
  add_test(NAME ${name} COMMAND ${under} $<TARGET_FILE:${name}>)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}"
    ENVIRONMENT "LC_ALL=C.UTF-8;QT_QPA_PLATFORM=${platform};PLANILHA_NO_PLACEMENT=1;PLANILHA_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
    SKIP_RETURN_CODE 77 SKIP_REGULAR_EXPRESSION "SKIP   : [^\n]*whole executable")
endfunction()
