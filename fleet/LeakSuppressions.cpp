// What libraries under the streams leave behind, for builds with LeakSanitizer.

extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_options();

extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libglib-2.0.so\n" // the old table, when GStreamer makes the table of quarks grow
           "leak:libx265.so\n"; // parts of each encoder
}

extern "C" const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
