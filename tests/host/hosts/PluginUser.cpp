extern "C" void writeRecord();

// Is linked with a plugin, and may have services of its own.
int main()
{
    writeRecord();
    return 0;
}
