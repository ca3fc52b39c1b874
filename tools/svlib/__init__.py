"""What goes into the package's libraries, by topic; written by tools/make_svlib.py."""
