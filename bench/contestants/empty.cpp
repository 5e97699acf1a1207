// empty.cpp: what starting and ending a process costs.
int main() {}
