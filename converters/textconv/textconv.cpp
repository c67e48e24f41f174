// Plain text in and out of a rich text.
