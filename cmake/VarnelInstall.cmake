# Where the parts of the program go. The program finds its core library and its window at fixed places beside itself,
# so the library folder is "lib/varnel" whatever the system calls its own.
if(APPLE)
    set(program_folder MacOS)
else()
    set(program_folder bin)
endif()
install(TARGETS varnel RUNTIME DESTINATION ${program_folder})
install(TARGETS varnel_core varnel_window
    LIBRARY DESTINATION lib/varnel
    RUNTIME DESTINATION lib/varnel)

if(APPLE)
    # Written after Apple's documentation; never built on a Mac. The prefix is the bundle's "Contents".
    install(FILES "${CMAKE_SOURCE_DIR}/packaging/macos/Info.plist" DESTINATION .)
else()
    set(packaging "${CMAKE_SOURCE_DIR}/packaging/linux")
    install(FILES "${packaging}/app.varnel.desktop" DESTINATION share/applications)
    install(FILES "${packaging}/app.varnel.metainfo.xml" DESTINATION share/metainfo)
    install(FILES "${packaging}/varnel.1" DESTINATION share/man/man1)
    install(FILES "${packaging}/app.varnel.svg" DESTINATION share/icons/hicolor/scalable/apps)
    install(FILES "${packaging}/icon-128.png" DESTINATION share/icons/hicolor/128x128/apps RENAME app.varnel.png)
    foreach(size 16 24 32 48 64 256 512)
        install(FILES "${packaging}/icons/${size}.png"
            DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME app.varnel.png)
    endforeach()
    install(FILES "${packaging}/completions/varnel.bash"
        DESTINATION share/bash-completion/completions RENAME varnel)
    install(FILES "${packaging}/completions/_varnel" DESTINATION share/zsh/vendor-completions)
    install(FILES "${packaging}/completions/varnel.fish" DESTINATION share/fish/vendor_completions.d)
endif()
