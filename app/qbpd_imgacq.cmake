qbpd_executable(NAME qbpd-imgacq
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_imgacq.cpp
  DEPS qbpd_camera qbpd_core qbpd_platform)

# The helper as a real process on a folder camera (libgphoto2's directory
# driver): 200 photos, the answers, the deletes, a camera pulled out.
add_test(NAME qbpd_imgacq_folder_camera
  COMMAND bash ${PROJECT_SOURCE_DIR}/tests/app/imgacq_test.sh
          $<TARGET_FILE:qbpd-imgacq> $<TARGET_FILE:qbpd-reg>)
set_tests_properties(qbpd_imgacq_folder_camera PROPERTIES LABELS integration)
