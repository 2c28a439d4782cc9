#pragma once
// Prints the driver's info log of a program and/or a shader after a failed
// link or compile.

class OpenGLError {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Fetches the two info-log entry points; false at the first missing one.
    static bool init();

    OpenGLError() : program(0), shader(0) {}

    void setProgram(unsigned handle) { program = handle; }
    void setShader(unsigned handle) { shader = handle; }
    unsigned getProgram() const { return program; }
    unsigned getShader() const { return shader; }

    // Program log first, then shader log, each only when its handle is set.
    void dump() const;

private:
    unsigned program;
    unsigned shader;
};
