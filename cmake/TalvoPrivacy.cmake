# Writes the privacy manifests that Apple's systems require. A manifest lists the calls of a library that need a reason,
# and the data that the library collects. scripts/check-privacy compares the manifests with what the libraries call.

# The reason for the calls of each category, as one of Apple's codes.
set(talvo_reason_FileTimestamp C617.1)   # metadata of files in the app's own folders
set(talvo_reason_SystemBootTime 35F9.1)  # the time between events within the app, and timers
set(talvo_reason_DiskSpace E174.1)       # whether there is room for a file to write
set(talvo_reason_UserDefaults CA92.1)    # values that only the app itself reads and writes

# talvo_privacy_manifest(FILE ACCESSES categories... COLLECTS data types...): writes a library's manifest. All collected
# data goes to the app's own consent service, is linked to the app's user, and is not used to track them.
function(talvo_privacy_manifest file)
  cmake_parse_arguments(PARSE_ARGV 1 PRIVACY "" "" "ACCESSES;COLLECTS")
  set(accessed "")
  foreach(category IN LISTS PRIVACY_ACCESSES)
    if(NOT talvo_reason_${category})
      message(FATAL_ERROR "No reason is known for calls of the category ${category}")
    endif()
    string(APPEND accessed "
    <dict>
      <key>NSPrivacyAccessedAPIType</key>
      <string>NSPrivacyAccessedAPICategory${category}</string>
      <key>NSPrivacyAccessedAPITypeReasons</key>
      <array>
        <string>${talvo_reason_${category}}</string>
      </array>
    </dict>")
  endforeach()
  set(collected "")
  foreach(type IN LISTS PRIVACY_COLLECTS)
    string(APPEND collected "
    <dict>
      <key>NSPrivacyCollectedDataType</key>
      <string>NSPrivacyCollectedDataType${type}</string>
      <key>NSPrivacyCollectedDataTypeLinked</key>
      <true/>
      <key>NSPrivacyCollectedDataTypeTracking</key>
      <false/>
      <key>NSPrivacyCollectedDataTypePurposes</key>
      <array>
        <string>NSPrivacyCollectedDataTypePurposeAppFunctionality</string>
      </array>
    </dict>")
  endforeach()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/PrivacyInfo.xcprivacy.in ${file} @ONLY)
endfunction()
