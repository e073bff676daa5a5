source_package=sqlite3
native_package=libsqlite3-dev

build_library() {
    # The source package holds the parts; its own script joins them into the one file meant to be compiled.
    cd source
    # That script's helpers run here, so they are configured for this machine; the file it makes is for any.
    ./configure --disable-shared --disable-readline --disable-tcl
    make sqlite3.c
    compile_c -DSQLITE_THREADSAFE=1 -DSQLITE_DQS=0 -DSQLITE_OMIT_LOAD_EXTENSION -DSQLITE_ENABLE_COLUMN_METADATA \
        -c sqlite3.c -o sqlite3.o
    mkdir -p "$stage/include" "$stage/lib"
    "$triplet-ar" rcs "$stage/lib/libsqlite3.a" sqlite3.o
    cp sqlite3.h src/sqlite3ext.h "$stage/include/"
}
