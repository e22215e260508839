// Carries precompiled headers; see tamrik_precompiled.
