#include <cstdio>
#include <cstring>

// A buffer on the stack and a copy into it, which a stack protector and a fortified C library would guard.
int main(int count, char** words) {
    char text[64] = {};
    if (count > 1 && std::strlen(words[1]) < sizeof(text)) std::strcpy(text, words[1]);
    return std::puts(text) < 0 ? 1 : 0;
}
