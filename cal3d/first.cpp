// Removed when the first source file arrives.
