/*
 * libmimora - Internet messages taken apart.
 *
 * Copyright (c) 2026 the mimora developers.
 *
 * This is the only header a caller includes. It compiles as C99, C11 and C++20.
 *
 *
 * CONVENTIONS
 *
 *  1. Families. M_ functions work on messages and their parts, S_ functions on
 *     byte streams, P_ functions on plain data.
 *
 *  2. Handles. M_Bodypart, S_InStream and S_OutStream are opaque. What a
 *     create function returns belongs to the caller, who gives it back to the
 *     destroy function of its family. A part that is found inside a message
 *     belongs to the message. Unless a block says otherwise, a null handle is
 *     answered with the value that stands for "nothing" (-1 for a count or a
 *     copy, NULL for a pointer) and does no harm; a handle that was destroyed,
 *     or never created, is the caller's fault and is only reported in the log.
 *
 *  3. Texts are zero-terminated 8-bit strings, only M_HTMLToText has UTF-16.
 *     Header texts are handed out as they stand in the message.
 *
 *  4. Sized copies. A function with BUFFER and SIZE copies a text and its zero
 *     when they fit. When BUFFER is NULL or *SIZE too small it copies nothing
 *     and stores the size that it needs, in bytes, zero included. A null SIZE
 *     is answered like a buffer that is too small, and nothing is touched.
 *
 *  5. Positions and sizes are counted in bytes. Positions count from the first
 *     byte of the input stream (its own position 0).
 *
 *  6. Results. A function that reports a status returns MIMORA_OK (0) or one of
 *     the MIMORA_E_ codes below.
 *
 *  7. Memory. Nothing that is handed out is ever freed by the caller, except
 *     handles through their destroy functions and lists through their P_Free
 *     functions. Bodies are never copied: a message refers to its input stream,
 *     which must outlive it.
 *
 *  8. Threads. Functions may run at the same time on different objects. One
 *     object belongs to one thread at a time, but several threads may read one
 *     message while none changes it, as long as those that read its stream
 *     hold the stream's lock (S_LockInStream). Blocks name only what differs.
 *
 *  9. Exceptions. The library throws nothing of its own, but C++ exceptions
 *     (std::bad_alloc, or one thrown by a stream callback) pass through after
 *     they were logged. C callers that may meet one compile with -fexceptions.
 *
 * 10. Log. When the log file exists (/var/log/mimora.err unless configured
 *     otherwise) errors are written into it; when mimora1.err stands beside it,
 *     every call is traced. P_SetQQ_callback takes the trace over.
 */
#ifndef MIMORA_MIMORA_H_
#define MIMORA_MIMORA_H_

#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h> /* char16_t */
#endif

#define MIMORA_VERSION_MAJOR 1
#define MIMORA_VERSION_MINOR 0
#define MIMORA_VERSION_PATCH 0

#if defined(_WIN32) && !defined(_WIN64)
#define MIMORA_CALL __stdcall
#else
#define MIMORA_CALL
#endif

#if defined(__GNUC__)
#define MIMORA_API __attribute__((visibility("default")))
#else
#define MIMORA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * Types
 * --------------------------------------------------------------------- */

typedef struct M_Bodypart M_Bodypart;   /* a message, or one part of it */
typedef struct S_InStream S_InStream;   /* a source of bytes */
typedef struct S_OutStream S_OutStream; /* a sink of bytes */

/* What a callback gets back as its first argument: an integer or a pointer. */
typedef intptr_t S_Context;

/* Reads at most LENGTH bytes into DESTINATION. Returns the number of bytes
 * read, 0 at the end of the data (it is then not asked again, unless the stream
 * is moved), -1 after an error (errno tells which). An answer beyond LENGTH is
 * an error, too. */
typedef int64_t(MIMORA_CALL *S_ReadProc)(S_Context, void *destination,
                                         int64_t length);

/* The same without a copy on the caller's side: points *BYTES at the data,
 * which must stay there until the next call. */
typedef int64_t(MIMORA_CALL *S_ReadPtrProc)(S_Context, const void **bytes,
                                            int64_t length);

/* Takes LENGTH bytes. Returns LENGTH; anything else is an error (errno). */
typedef int64_t(MIMORA_CALL *S_WriteProc)(S_Context, const void *data,
                                          int64_t length);

/* Moves to the absolute POSITION; the next read begins there. */
typedef void(MIMORA_CALL *S_SeekProc)(S_Context, int64_t position);

/* Returns the absolute position of the next byte to be read. It is asked once,
 * before the first read or seek: from then on the stream counts. */
typedef int64_t(MIMORA_CALL *S_TellProc)(S_Context);

/* Takes one line of the trace, without time stamp and line end. The text lives
 * only during the call. It may be called from any thread. What it throws is
 * lost. */
typedef void(MIMORA_CALL *P_TraceProc)(const char *line);

/* ------------------------------------------------------------------------
 * Result codes: 0, or 0x20000000 plus a number
 * --------------------------------------------------------------------- */

#define MIMORA_OK 0
#define MIMORA_E_READ 0x20000001         /* the input stream failed */
#define MIMORA_E_WRITE 0x20000002        /* the output stream failed */
#define MIMORA_E_OPEN_INPUT 0x20000003   /* input file not opened */
#define MIMORA_E_OPEN_OUTPUT 0x20000004  /* output file not created */
#define MIMORA_E_TEMP_WRITE 0x20000007   /* temporary file not written */
#define MIMORA_E_TEMP_CREATE 0x20000008  /* temporary file not created */
#define MIMORA_E_TEMP_OPEN 0x20000009    /* temporary file not opened again */
#define MIMORA_E_BAD_PART 0x2000000B     /* not the handle of a part */
#define MIMORA_E_BAD_OUTPUT 0x2000000C   /* not the handle of an output stream */
#define MIMORA_E_NO_BODY 0x200001F4      /* the part has no body */
#define MIMORA_E_BODY_NAME 0x200001F5    /* the file with the body has no name */
#define MIMORA_E_BODY_OPEN 0x200001F6    /* the file with the body not opened */
#define MIMORA_E_BODY_MEMORY 0x200001F7  /* no memory with the body */
#define MIMORA_E_NO_SUCH_FILE 0x200001F8 /* no embedded file of that number */
#define MIMORA_E_CHARSET 0x200001F9      /* charset not known: nothing written */
#define MIMORA_E_NOT_OPEN 0x20000259     /* stream missing or not open */
#define MIMORA_E_HEADER 0x2000025A       /* header unreadable */
#define MIMORA_E_HEADER_CUT 0x2000025B   /* data ended inside the header; kept */
#define MIMORA_E_HEADER_ODD 0x2000025C   /* reserved: no call answers it */
#define MIMORA_E_NO_BOUNDARY 0x2000025D  /* multipart without boundary; kept */
#define MIMORA_E_STORE 0x200002BC        /* certificate store unreadable */
#define MIMORA_E_CERTIFICATE 0x200002BD  /* no such certificate in the store */
#define MIMORA_E_PRIVATE_KEY 0x200002BE  /* no private key for the certificate */
#define MIMORA_E_PASSWORD 0x200002BF     /* the password does not open it */
#define MIMORA_E_CERTIFICATE_TIME 0x200002C0 /* certificate not valid now */
#define MIMORA_E_ALGORITHM 0x200002C1    /* algorithm unknown or refused */
#define MIMORA_E_ENGINE 0x200002C2       /* OpenSSL failed: the log tells why */
#define MIMORA_E_CERTIFICATE_PURPOSE 0x200002C3 /* certificate not made for it */
#define MIMORA_E_UNCLASSIFIED 0x200003E7 /* any other failure */

/* Flags of M_GetBodypartFlags. */
#define MIMORA_FLAG_RECEIPT_REQUESTED 0x1u
#define MIMORA_FLAG_SIGNED 0x2u
#define MIMORA_FLAG_PKCS7 0x4u

/* ------------------------------------------------------------------------
 * Messages: life
 * --------------------------------------------------------------------- */

/*
 * Creates an empty message: no header field, no body, no child.
 *
 * Returns the message, or NULL when memory is short.
 * Memory:  the caller's; M_DestroyMessage frees it.
 * Since:   1.0
 */
MIMORA_API M_Bodypart *M_CreateMessage(void);

/*
 * Destroys a message with everything that it owns. The input stream that it was
 * loaded from stays.
 *
 * part    a message from M_CreateMessage; NULL is ignored. Parts of a message
 *         are destroyed with it, or by M_DeleteChildBodypart.
 *
 * Returns 0.
 * Since:   1.0
 */
MIMORA_API int32_t M_DestroyMessage(M_Bodypart *part);

/*
 * Empties a part: header fields, children, enclosed message and embedded-file
 * lists are destroyed, the part is as new and its handle stays valid.
 *
 * part    the part; NULL is ignored.
 *
 * Since:   1.0
 */
MIMORA_API void M_CleanMessage(M_Bodypart *part);

/*
 * Tests whether the handle is one of a part, for the log only.
 *
 * part    any address.
 *
 * Since:   1.0
 */
MIMORA_API void M_CheckBodypart(M_Bodypart *part);

/*
 * Writes a readable dump of the part and all below it to the standard output:
 * content type, transfer encoding, offsets and sizes (low 32 bits), children,
 * embedded files.
 *
 * part    the part; for NULL a line that says so is written.
 *
 * Since:   1.0
 */
MIMORA_API void M_PrintBodypart(M_Bodypart *part);

/* ------------------------------------------------------------------------
 * Messages: loading (RFC 5322, RFC 2045, RFC 2046)
 * --------------------------------------------------------------------- */

/*
 * Parses a message from the stream's present position to its end. What the part
 * held before is destroyed first. Every part's place in the stream and its
 * decoded size are recorded; no byte of a body is kept. Uuencoded files in text
 * bodies and the files inside a TNEF body (winmail.dat) are listed.
 *
 * Damaged mail is not refused: a header that is cut off, a multipart that is
 * not closed and parts that make no sense are kept as well as they can be read.
 * Beyond 100 levels of nesting a part is a leaf whatever its type says, and
 * beyond 10,000 parts the rest of a multipart becomes one last leaf. Beyond
 * 10,000 listed files in a message further ones stay in their bodies, and beyond
 * 100,000 header fields a header lists only those that tell what its body is.
 * Of one parameter 10,000 pieces (RFC 2231) are joined. The error log tells of
 * levels, parts and fields beyond the limits.
 *
 * part    receives the tree; it may be a part inside a message.
 * in      the stream; the tree refers to it, so it must outlive the tree
 *         (or see M_UndefineBodypartBodyStreamDefinition). A boundary that is
 *         left from earlier work is removed.
 *
 * Returns MIMORA_OK; MIMORA_E_HEADER_CUT (the data ended before the empty line
 *         that ends the header) and MIMORA_E_NO_BOUNDARY (a multipart message
 *         without a boundary is one opaque body): the tree is complete.
 *         MIMORA_E_NOT_OPEN: PART or IN is NULL or IN is not open.
 *         MIMORA_E_HEADER, MIMORA_E_READ: the stream failed (S_GetIOError
 *         tells why); the tree holds what was read until then.
 *         MIMORA_E_TEMP_WRITE: a TNEF body could not be unpacked.
 * Since:   1.0
 */
MIMORA_API int32_t M_LoadMessage(M_Bodypart *part, S_InStream *in);

/*
 * Parses a message that lies in memory, without a stream of the caller's: the
 * part makes a memory stream of its own over the bytes.
 *
 * part    receives the tree, as in M_LoadMessage.
 * data    the bytes; the caller keeps them alive and unchanged as long as the
 *         tree. No byte of a body is copied.
 * length  their number, not negative.
 *
 * Returns the codes of M_LoadMessage; MIMORA_E_NOT_OPEN also for DATA NULL or a
 *         negative LENGTH.
 * Since:   1.0
 */
MIMORA_API int32_t M_LoadBodypartFromBuffer(M_Bodypart *part, const void *data,
                                            int32_t length);

/*
 * The same over a private copy of the text, so that the caller may free the text
 * at once. While the trace goes into the log file, so does the text.
 *
 * part    receives the tree and owns the copy.
 * text    the bytes.
 * length  their number; -1: TEXT is zero-terminated.
 *
 * Returns the codes of M_LoadBodypartFromBuffer.
 * Since:   1.0
 */
MIMORA_API int32_t M_LoadBodypartFromString(M_Bodypart *part, const char *text,
                                            int32_t length);

/*
 * Detaches every body of the tree that lies in the stream, so that the stream
 * may be destroyed. Offsets and sizes are kept.
 *
 * part    the tree.
 * in      the stream to detach from.
 *
 * Since:   1.0
 */
MIMORA_API void M_UndefineBodypartBodyStreamDefinition(M_Bodypart *part,
                                                       S_InStream *in);

/*
 * Attaches every detached body of the tree to a stream that holds the same bytes
 * at the same positions as the one it was loaded from.
 *
 * part    the tree.
 * in      the stream to attach to; it must outlive the tree.
 *
 * Since:   1.0
 */
MIMORA_API void M_TakeoverBodypartBodyStreamDefinition(M_Bodypart *part,
                                                       S_InStream *in);

/* ------------------------------------------------------------------------
 * Messages: the tree
 * --------------------------------------------------------------------- */

/*
 * Counts the children of a multipart. The enclosed message of a message part is
 * no child: M_GetMessageBodypartBody finds it.
 *
 * part    the part.
 *
 * Returns the number of children; 0 when there are none, or PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetChildBodypartsCount(M_Bodypart *part);

/*
 * Finds a child by its position.
 *
 * part    the parent.
 * index   position, counted from 0.
 *
 * Returns the child, or NULL when there is none at that position.
 * Memory:  the child belongs to PART.
 * Since:   1.0
 */
MIMORA_API M_Bodypart *M_GetNthChildBodypart(M_Bodypart *part, int32_t index);

/*
 * Finds the message that a part of type message/... encloses.
 *
 * part    the part.
 *
 * Returns the enclosed message; PART itself when it encloses none; NULL for NULL.
 * Memory:  the enclosed message belongs to PART.
 * Since:   1.0
 */
MIMORA_API M_Bodypart *M_GetMessageBodypartBody(M_Bodypart *part);

/*
 * Appends an empty child.
 *
 * parent  the part that receives it.
 *
 * Returns the child, or NULL when PARENT is NULL.
 * Memory:  the child belongs to PARENT.
 * Since:   1.0
 */
MIMORA_API M_Bodypart *M_CreateChildBodypart(M_Bodypart *parent);

/*
 * Removes a child and destroys it with all below it.
 *
 * parent  the part that owns the child.
 * child   the child.
 *
 * Returns 0 removed; -1 CHILD is no child of PARENT.
 * Since:   1.0
 */
MIMORA_API int32_t M_DeleteChildBodypart(M_Bodypart *parent, M_Bodypart *child);

/*
 * Tells what is special about a part.
 *
 * part    the part.
 * flags   receives the sum of
 *         MIMORA_FLAG_RECEIPT_REQUESTED  a Disposition-Notification-To field
 *                                        that is not empty (RFC 8098),
 *         MIMORA_FLAG_SIGNED             multipart/signed (RFC 1847), or
 *                                        PKCS #7 with smime-type signed-data,
 *         MIMORA_FLAG_PKCS7              application/pkcs7-mime or
 *                                        application/x-pkcs7-mime (RFC 8551).
 *
 * Returns 0; -1 when PART or FLAGS is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartFlags(M_Bodypart *part, uint32_t *flags);

/* The same under another name; in the log it is M_GetBodypartFlags. Since 1.0 */
MIMORA_API int32_t M_GetMessageFlags(M_Bodypart *part, uint32_t *flags);

/* ------------------------------------------------------------------------
 * Messages: header fields (RFC 5322 2.2)
 *
 * Fields stand in the order of the message, duplicates included. A value begins
 * behind the colon and one space; folding is kept as CR LF and the white space.
 * Names are compared without regard to case, and the whole name must match.
 * Pointers into a part's header live until its header is changed, or the part
 * is loaded again, cleaned or destroyed.
 * --------------------------------------------------------------------- */

/*
 * Counts the header fields of a part.
 *
 * part    the part.
 *
 * Returns the number of fields; -1 when PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_HeaderFieldsCount(M_Bodypart *part);

/* The same function under another name. Since 1.0 */
MIMORA_API int32_t M_BodypartHeaderFieldsCount(M_Bodypart *part);

/*
 * Finds a field by its position.
 *
 * part    the part.
 * index   position, counted from 0.
 * name    receives the name, without the colon.
 * value   receives the value.
 *
 * Returns 0; -1 no field at that position, both pointers are then NULL. A null
 *         NAME or VALUE is passed over.
 * Memory:  the texts belong to the part (see above).
 * Since:   1.0
 */
MIMORA_API int32_t M_BodypartHeaderField(M_Bodypart *part, int32_t index,
                                         const char **name, const char **value);

/*
 * Copies a field as one text: name, ": " and value.
 *
 * part    the part.
 * index   position, counted from 0.
 * buffer  receives the text; NULL asks for the size only.
 * size    in:  room in BUFFER, in bytes, WITHOUT the terminating zero: a buffer
 *              must be one byte larger than *SIZE says.
 *         out: length of the text, the zero not counted, unless -1 is returned.
 *
 * Returns 0 copied; 1 BUFFER NULL or *SIZE too small; -1 no such field.
 * Since:   1.0
 */
MIMORA_API int32_t M_BodypartHeaderFieldByIndex(M_Bodypart *part, int32_t index,
                                                char *buffer, uint32_t *size);

/*
 * Finds the value of the first field of a name.
 *
 * part    the part.
 * name    field name without the colon.
 *
 * Returns the value, or NULL when there is no such field.
 * Memory:  the text belongs to the part (see above).
 * Since:   1.0
 */
MIMORA_API const char *M_BodypartHeaderFieldValue(M_Bodypart *part,
                                                  const char *name);

/*
 * Copies the value of the first field of a name, folding included.
 *
 * part    the part.
 * name    field name without the colon.
 * buffer  receives the text; NULL asks for the size only.
 * size    in:  room in BUFFER, in bytes.
 *         out: bytes needed, terminating zero included, when 1 is returned;
 *              otherwise left alone.
 *
 * Returns 0 copied; 1 BUFFER NULL or too small; -1 the part has no such field.
 * Since:   1.0
 */
MIMORA_API int32_t M_BodypartHeaderFieldValueProc(M_Bodypart *part,
                                                  const char *name, char *buffer,
                                                  uint32_t *size);

/*
 * Finds the value of the n-th of several fields with one name.
 *
 * part    the part.
 * name    field name without the colon.
 * n       which one, counted from 1.
 *
 * Returns the value, or NULL when there are fewer, or N is below 1.
 * Memory:  the text belongs to the part (see above).
 * Since:   1.0
 */
MIMORA_API const char *M_BodypartHeaderFieldNthValue(M_Bodypart *part,
                                                     const char *name, int32_t n);

/*
 * Copies the value of the n-th of several fields with one name.
 *
 * n       which one, counted from 1; the other arguments and the results are
 *         those of M_BodypartHeaderFieldValueProc.
 * Since:   1.0
 */
MIMORA_API int32_t M_BodypartHeaderFieldNthValueProc(M_Bodypart *part,
                                                     const char *name, int32_t n,
                                                     char *buffer, uint32_t *size);

/*
 * Appends a field to the header.
 *
 * part   the part.
 * name   its name, without the colon.
 * value  its text. It is encoded as M_EncodeHeaderFieldValue does it, without a
 *        given charset and encoding; line ends that no blank follows become
 *        spaces. NULL: empty.
 *
 * Returns 0; -1 when PART is NULL, or NAME is none: printable ASCII without blanks
 *         and colons (RFC 5322 2.2).
 * Since:   1.0
 */
MIMORA_API int32_t M_AddBodypartHeaderField(M_Bodypart *part, const char *name,
                                            const char *value);

/*
 * Removes a header field.
 *
 * part    the part.
 * index   position, counted from 0.
 *
 * Returns 0 removed; -1 no field at that position.
 * Since:   1.0
 */
MIMORA_API int32_t M_DeleteBodypartHeaderField(M_Bodypart *part, int32_t index);

/*
 * Copies the transfer encoding of a part: the value of the field
 * Content-Transfer-Encoding (RFC 2045 6) without parameters and comments,
 * trimmed, as written.
 *
 * part    the part.
 * buffer  receives the text; NULL asks for the size only.
 * size    in:  room in BUFFER, in bytes.
 *         out: bytes needed, terminating zero included, when 1 is returned;
 *              otherwise left alone.
 *
 * Returns 0 copied; 1 BUFFER NULL or too small; -1 the part declares none.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetContentTransferEncoding(M_Bodypart *part, char *buffer,
                                                uint32_t *size);

/*
 * Copies the disposition of a part, "inline" or "attachment" (RFC 2183), without
 * parameters and comments, trimmed, as written.
 *
 * Arguments and results are those of M_GetContentTransferEncoding.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetContentDisposition(M_Bodypart *part, char *buffer,
                                           uint32_t *size);

/*
 * Copies the charset parameter of the Content-Type field (RFC 2046 4.1.2), as
 * written, quotes removed.
 *
 * Arguments and results are those of M_GetContentTransferEncoding.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetCharset(M_Bodypart *part, char *buffer, uint32_t *size);

/*
 * Copies a parameter of a structured header field, such as "filename" of
 * "Content-Disposition" (RFC 2045 5.1): quotes removed, comments dropped, names
 * compared without regard to case. Continuations and percent-encoding are
 * undone (RFC 2231) and a text with a declared charset comes out in UTF-8; with
 * a charset that is not known its bytes are left as they stand. Encoded words
 * (RFC 2047) are left as they stand. When a parameter is given in a plain and in
 * an extended form, the extended one counts.
 *
 * part       the part.
 * field      name of the header field; the first of that name is taken.
 * parameter  name of the parameter, without "*".
 * buffer     receives the text; NULL asks for the size only.
 * size       in:  room in BUFFER, in bytes.
 *            out: bytes needed, terminating zero included, when 1 is returned;
 *                 otherwise left alone.
 *
 * Returns 0 copied; 1 BUFFER NULL or too small; -1 no such field or parameter.
 * Since:   1.0
 */
MIMORA_API int32_t M_MimeParameter(M_Bodypart *part, const char *field,
                                   const char *parameter, char *buffer,
                                   uint32_t *size);

/*
 * Copies the content type of a part in upper case, for example "TEXT/HTML". A
 * part without a usable Content-Type field is "TEXT/PLAIN", inside a
 * multipart/digest "MESSAGE/RFC822" (RFC 2045 5.2, RFC 2046 5.1.5).
 *
 * part    the part.
 * buffer  receives the text, cut to fit, always with a terminating zero.
 * size    room in BUFFER, in bytes.
 *
 * Returns 0; 1 the text was cut, BUFFER is NULL or SIZE is 0, or PART is NULL
 *         (BUFFER is then the empty text).
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartMimeContentType(M_Bodypart *part, char *buffer,
                                                uint32_t size);

/*
 * Copies the content type of an attachment.
 *
 * number  0: the part itself, as M_GetBodypartMimeContentType; from 1 on: the
 *         n-th file inside its body, uuencoded ones first, then those of a TNEF
 *         body. Such a file has no declared type: the extension of its name
 *         tells it, as P_Extension2MimeType does.
 * part    the part.
 * buffer  receives the text, cut to fit, always with a terminating zero.
 * size    room in BUFFER, in bytes.
 *
 * Returns 0; 1 the text was cut or BUFFER is NULL; 1 also when the type is not
 *         known, there is no such attachment, or PART is NULL (BUFFER is then the
 *         empty text).
 * Since:   1.0
 */
MIMORA_API int32_t M_GetAttachmentMimeType(int32_t number, M_Bodypart *part,
                                           char *buffer, uint32_t size);

/*
 * Finds the letter of a message: the plain text that a person wrote.
 *
 * A single part is the letter when it is text/plain and no attachment
 * (Content-Disposition, RFC 2183). Of a multipart/alternative it is the first
 * such part, else that of the first alternative inside it that has one; of a
 * multipart/related (RFC 2387) the part that "start" names, or the first, or the
 * plain version of either; of any other multipart the first child that is a text,
 * an alternative or a related one decides. When that is HTML, there is none.
 *
 * part    usually the root of a message.
 *
 * Returns the part, which belongs to the message; NULL when there is no letter.
 * Since:   1.0
 */
MIMORA_API M_Bodypart *M_FindTextLetterBodypart(M_Bodypart *part);

/*
 * Copies the name of a part: the parameter "name" of Content-Type, else
 * "filename" of Content-Disposition, with RFC 2231 and encoded words (RFC 2047)
 * undone, in UTF-8. A name that declares no charset stays as it stands. It is the
 * sender's text: never use it as a path.
 *
 * part    the part.
 * buffer  receives as much of the name as fits, always zero-terminated; its last
 *         byte is zero, too.
 * size    room in BUFFER, in bytes.
 *
 * Returns 0 whole, or there is none and the text is empty; 1 cut short, or there
 *         is no room, or PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartName(M_Bodypart *part, char *buffer,
                                     uint32_t size);

/*
 * The same, in a character set, and never cut short.
 *
 * buffer         receives the name if it fits with its zero; otherwise all of
 *                the buffer is zero.
 * size           room in BUFFER, in bytes.
 * targetCharset  what the name is wanted in; NULL, empty or not known: UTF-8.
 *
 * Returns 0 copied, or there is no name; 1 it does not fit, or PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartName1(M_Bodypart *part, char *buffer,
                                      uint32_t size, const char *targetCharset);

/*
 * The same for a part (NUMBER 0), or for the n-th file embedded in its body,
 * uuencoded files first, then those of a TNEF body. The names of embedded files
 * are copied as they stand; no name is given beyond the last one.
 *
 * number         0: the part; n: the n-th embedded file.
 * part           the part.
 * buffer         as for M_GetBodypartName1, as are the other arguments.
 *
 * Returns 0 copied, or there is no name; 1 it does not fit, or PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetAttachmentName(int32_t number, M_Bodypart *part,
                                       char *buffer, uint32_t size,
                                       const char *targetCharset);

/* ------------------------------------------------------------------------
 * Header texts beyond ASCII (RFC 2047)
 * --------------------------------------------------------------------- */

/*
 * Decodes the encoded words of a header value and removes its folding. Words are
 * found wherever they stand; neighbours are joined first, so that a character may
 * be split between them, and white space between them goes. Line ends inside
 * words become blanks, other control characters stay. What is not quite an
 * encoded word, or has a charset that is not known, stays as it is, as does all
 * other text.
 *
 * value          the value as it stands in the header.
 * targetCharset  what the words are wanted in; NULL, empty or not known: UTF-8.
 * buffer         receives the text; NULL asks for the size only.
 * size           in: room in BUFFER, in bytes; out, when 0 is returned: the bytes
 *                needed, zero included.
 *
 * Returns 1 copied; 0 BUFFER is NULL or too small, or VALUE or SIZE is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_DecodeHeaderFieldValue(const char *value,
                                            const char *targetCharset,
                                            char *buffer, uint32_t *size);

/*
 * Encodes a header value: words with characters beyond ASCII become encoded
 * words of at most 75 characters that split no character; other words stay as
 * they are. Its lines are folded anew at 76 characters, the first one some 20
 * earlier, for the field's name. A value in plain ASCII is copied unchanged, line
 * ends and all.
 *
 * value     the text; a quoted string in it is one word.
 * charset   what it is in, written into the words by its usual name; NULL, empty
 *           or not known: UTF-8 if it is proper UTF-8, else windows-1250.
 * encoding  "B" (base64) or "Q" (like quoted-printable); NULL: the shorter.
 * buffer    receives the text; NULL asks for the size only.
 * size      in: room in BUFFER, in bytes; out, when 0 is returned: the bytes
 *           needed, zero included.
 *
 * Returns 1 copied; 0 BUFFER is NULL or too small, or VALUE or SIZE is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_EncodeHeaderFieldValue(const char *value,
                                            const char *charset,
                                            const char *encoding, char *buffer,
                                            uint32_t *size);

/* ------------------------------------------------------------------------
 * Messages: bodies decoded
 * --------------------------------------------------------------------- */

/*
 * Writes the body of a part. Memory does not grow with the body; temporary files,
 * if any, are gone afterwards. The size that M_GetBodypartSize tells becomes that
 * of the body as it was decoded, or translated, here; it stays what it was when
 * the body is copied in its own encoding.
 *
 * part            the part.
 * targetEncoding  "base64" or "quoted-printable": the transfer encoding (RFC
 *                 2045) to write it in; any other name: as it is when decoded;
 *                 NULL or empty: decoded. A body that has that encoding already
 *                 is copied as it stands. UTF-16 cannot be quoted-printable.
 * targetCharset   the character set to translate it to, when it is text with
 *                 another one; what has no place in that becomes a similar
 *                 character or "?". UTF-16 begins with a byte-order mark. NULL
 *                 or empty: not translated.
 * in4             the stream to read when the part's own is gone, or was taken
 *                 away by M_UndefineBodypartBodyStreamDefinition; may be NULL.
 * out             the stream to write; it is flushed.
 *
 * Returns MIMORA_OK; -1 or MIMORA_E_READ: the body cannot be read (S_GetIOError of
 *         the input stream tells why), or its source ends before it does; -2 or
 *         MIMORA_E_WRITE: it cannot be written; MIMORA_E_TEMP_...: a temporary
 *         file failed (disk full, no access); MIMORA_E_CHARSET: one of the
 *         charsets is not known, or is not for that encoding, and nothing was
 *         written; MIMORA_E_NO_BODY, MIMORA_E_BODY_...: the part has no body;
 *         MIMORA_E_NOT_OPEN: a handle that is needed is missing or not open.
 * Threads: several may write parts of one message at the same time, each into a
 *         stream of its own: the input stream is locked meanwhile. While a part
 *         is written no other thread asks for its size.
 * Since:   1.0
 */
MIMORA_API int32_t M_SaveBodypartBody(M_Bodypart *part,
                                      const char *targetEncoding,
                                      const char *targetCharset,
                                      S_InStream *in4, S_OutStream *out);

/*
 * The same, and says what becomes of uuencoded files in a text.
 *
 * keepEmbedded  not 0: they stay in the text, as with M_SaveBodypartBody; 0: they
 *               are cut out.
 *
 * Returns what M_SaveBodypartBody returns.
 * Since:   1.0
 */
MIMORA_API int32_t M_SaveBodypartBodyEx(M_Bodypart *part,
                                        const char *targetEncoding,
                                        const char *targetCharset,
                                        S_InStream *in4, S_OutStream *out,
                                        int32_t keepEmbedded);

/*
 * Writes a body, decoded and without the uuencoded files in it, or one of the
 * files embedded in it.
 *
 * number  0: the body; n: the n-th embedded file, uuencoded files first, then
 *         those of a TNEF body.
 * part    the part.
 * in4     as for M_SaveBodypartBody.
 * out     as for M_SaveBodypartBody.
 *
 * Returns what M_SaveBodypartBody returns; MIMORA_E_NO_SUCH_FILE: there is no such
 *         file; MIMORA_E_BAD_PART, MIMORA_E_BAD_OUTPUT: a handle is none, or no
 *         longer one.
 * Since:   1.0
 */
MIMORA_API int32_t M_SaveAttachment(int32_t number, M_Bodypart *part,
                                    S_InStream *in4, S_OutStream *out);

/* Told of a file that M_DecodeEML has written: PART lives as long as the call,
 * NUMBER is 0 for its body or that of the file embedded in it, PATH is where it
 * is, and SIZE how many bytes it has. */
typedef void(MIMORA_CALL *M_DecodedPartProc)(S_Context, M_Bodypart *part,
                                             int32_t number, const char *path,
                                             int64_t size);

/*
 * Takes a stored message apart: writes every body without parts below it, and
 * every file embedded in one, decoded, into files of a directory. Uuencoded files
 * are cut out of the texts.
 *
 * The files have the names of the parts, made safe: no directory, no control
 * characters, no dot in front, not too long, no name of a device. A part without
 * a name is called part-1.2 after its place, with the extension of its type. A
 * name that another file of the message has, in whatever letter case, or that is
 * taken in the directory, gets " (2)" in front of its extension. No existing file
 * is touched, and none lands outside the directory. A file that cannot be written
 * is removed again, and the others follow.
 *
 * fileName         the message; below 2 GiB.
 * outputDirectory  must exist, and not be empty ("." is the current one).
 * targetCharset    the character set that texts are translated to; NULL or
 *                  empty: none. A text whose own is not known is kept as it is.
 * onPart           told of each file; may be NULL.
 * context          handed to ONPART.
 * flags            0.
 * partCount        receives the number of files written; may be NULL.
 *
 * Returns what M_LoadMessage returns; MIMORA_E_OPEN_INPUT: the message cannot be
 *         opened; MIMORA_E_CHARSET: targetCharset is not known; else, when files
 *         could not be written, the reason for the first: MIMORA_E_OPEN_OUTPUT
 *         when it could not be created, or what M_SaveBodypartBody returns.
 * Since:   1.0
 */
MIMORA_API int32_t M_DecodeEML(const char *fileName,
                               const char *outputDirectory,
                               const char *targetCharset,
                               M_DecodedPartProc onPart, S_Context context,
                               uint32_t flags, uint32_t *partCount);

/* ------------------------------------------------------------------------
 * Messages: bodies as they stand in the source
 * --------------------------------------------------------------------- */

/*
 * Tells the size of a part's body.
 *
 * part         the part.
 * decodedSize  receives the bytes that the body yields when its transfer
 *              encoding is undone, uuencoded files in a text not counted.
 * rawSize      receives the bytes that the body takes in the source.
 *              Either pointer may be NULL.
 *
 * Returns 0; -1 when PART is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartSize(M_Bodypart *part, int64_t *decodedSize,
                                     int64_t *rawSize);

/*
 * Tells the size of a body, or of one file embedded in it.
 *
 * number  0: the body; n: the n-th embedded file, uuencoded files first, then
 *         those of a TNEF body.
 * part    the part.
 *
 * Returns the decoded size in bytes, or the size in the source of a body whose
 *         decoded size is not known; -1 when PART is NULL or has no such file.
 * Since:   1.0
 */
MIMORA_API int64_t M_GetAttachmentSize(int32_t number, M_Bodypart *part);

/*
 * Tells the size of the body in the source, its low 32 bits; 0 for NULL.
 * Since:   1.0
 */
MIMORA_API uint32_t M_GetBodyTextRawSize(M_Bodypart *part);

/*
 * Tells the size of header and body in the source, its low 32 bits; 0 for NULL.
 * Since:   1.0
 */
MIMORA_API uint32_t M_GetBodypartTextRawSize(M_Bodypart *part);

/*
 * Reads bytes of the source, beginning in the part's body. Nothing is decoded,
 * and nothing stops the reading at the end of the body: the caller asks for as
 * many bytes as M_GetBodyTextRawSize tells.
 *
 * part    the part.
 * in4     the stream to read; NULL: the one that the part was loaded from.
 *         Its boundary and its read limit are removed.
 * buffer  receives the bytes; no zero is added.
 * offset  where to begin, counted from the first byte of the body. In front of
 *         the source's first byte, and behind its last, there is nothing to read.
 * size    in: bytes wanted; out: bytes read.
 *
 * Returns 0, or the stream's error (S_GetIOError); MIMORA_E_NOT_OPEN when there
 *         is no stream, PART, BUFFER or SIZE is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodyText(M_Bodypart *part, S_InStream *in4, void *buffer,
                                 int32_t offset, uint32_t *size);

/*
 * Reads bytes of the source, beginning in the part's header. For the root of a
 * message reading goes on to the end of the stream; for any other part it stops
 * at the end of the part's body.
 *
 * offset  where to begin, counted from the first byte of the header; the other
 *         arguments and the results are those of M_GetBodyText.
 * Since:   1.0
 */
MIMORA_API int32_t M_GetBodypartText(M_Bodypart *part, S_InStream *in4,
                                     void *buffer, int32_t offset,
                                     uint32_t *size);

/*
 * Writes bytes of the source into a file, undecoded.
 *
 * part      the part.
 * in4       the stream to read; NULL: the one that the part was loaded from.
 * fileName  the file; created, readable by its owner only, or emptied.
 * bodyOnly  not 0: begins in the body and may read beyond it, as M_GetBodyText;
 *           0: begins in the header and ends with the part, as M_GetBodypartText.
 * offset    where to begin, counted from there.
 * count     in: bytes wanted; out: bytes written.
 *
 * Returns MIMORA_OK, or the stream's error (S_GetIOError);
 *         MIMORA_E_OPEN_OUTPUT: no file was made; MIMORA_E_READ: there are fewer
 *         bytes than wanted, and MIMORA_E_WRITE: the file is removed again;
 *         MIMORA_E_NOT_OPEN when there is no stream, or PART or COUNT is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t M_SaveBodyOrBodypartTextToFile(M_Bodypart *part,
                                                  S_InStream *in4,
                                                  const char *fileName,
                                                  int32_t bodyOnly,
                                                  int32_t offset, uint32_t *count);

/* ------------------------------------------------------------------------
 * Messages: HTML
 * --------------------------------------------------------------------- */

/*
 * Makes plain text of an HTML document: the visible text of its body as browsers
 * lay it out (innerText) without style sheets and scripts. White space is
 * folded, blocks and table rows are lines, paragraphs stand between empty lines,
 * cells are parted by tabs. Style attributes count, hidden elements are left
 * out, character references are decoded, broken markup is repaired. Line ends
 * are LF.
 *
 * html        the document in UTF-16; NULL is an empty one.
 * text        receives the text and its zero; NULL asks for the size only.
 * textLength  in:  room in text, in UTF-16 units.
 *             out: units needed, terminating zero included, whatever is
 *                  returned. A NULL is answered with 0.
 *
 * Returns 1 copied; 0 TEXT is NULL or too small: nothing is copied.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t M_HTMLToText(const char16_t *html, char16_t *text,
                                uint32_t *textLength);

/* ------------------------------------------------------------------------
 * Streams
 * --------------------------------------------------------------------- */

/*
 * Creates an input stream over a file, a block of memory or callbacks.
 *
 * source      LENGTH -1: name of a file, which is opened for reading. It must be
 *             a regular, seekable file below 2 GiB (EISDIR, ESPIPE, EOVERFLOW).
 *             Other LENGTH: the bytes, which the caller keeps alive and
 *             unchanged as long as the stream. NULL: callbacks are used.
 * length      -1, or the number of bytes; below -1 counts as 0.
 * context     first argument of the callbacks.
 * read        reads from the source.
 * seek        moves in the source; may be NULL for a source that is read once
 *             from its beginning to its end.
 * tell        tells the position in the source; NULL: it begins at 0.
 * bufferSize  bytes to read at once from a file or a callback; below 1: 16,384.
 *
 * Returns the stream, or NULL when memory is short or neither SOURCE nor READ is
 *         given. A file that cannot be opened gives a stream that delivers
 *         nothing; S_GetIOError tells why.
 * Memory:  the caller's; S_DestroyInStream frees it.
 * Since:   1.0
 */
MIMORA_API S_InStream *S_CreateInStream(const void *source, int32_t length,
                                        S_Context context, S_ReadProc read,
                                        S_SeekProc seek, S_TellProc tell,
                                        int32_t bufferSize);

/*
 * Creates an input stream over a callback that points at its own bytes.
 *
 * Arguments, result and memory are those of S_CreateInStream.
 * Since:   1.0
 */
MIMORA_API S_InStream *S_CreateInStream1(S_Context context, int32_t bufferSize,
                                         S_ReadPtrProc readptr, S_SeekProc seek,
                                         S_TellProc tell);

/*
 * Destroys an input stream and closes its file. Messages that were loaded from
 * it must have been destroyed or detached before.
 *
 * in      the stream; NULL is ignored.
 *
 * Since:   1.0
 */
MIMORA_API void S_DestroyInStream(S_InStream *in);

/*
 * Tests whether the handle is one of an input stream, for the log only.
 * Since:   1.0
 */
MIMORA_API void S_CheckInStream(S_InStream *in);

/*
 * Moves an input stream, and removes a boundary and a read limit that were left
 * on it.
 *
 * in        the stream; NULL is ignored.
 * position  absolute position. A negative one is ignored; by a memory stream
 *           every one that is not inside its bytes. A callback stream without a
 *           seek function can only move inside its buffer: anything else is the
 *           error ESPIPE.
 *
 * Since:   1.0
 */
MIMORA_API void S_SeekReadPos(S_InStream *in, int64_t position);

/*
 * Takes the stream's lock, and gives it back. Threads that share a stream hold
 * it from the first seek to the last read. The thread that holds it may take it
 * again, and gives it back as often.
 *
 * in      the stream; NULL is ignored.
 *
 * Threads: any.
 * Since:   1.0
 */
MIMORA_API void S_LockInStream(S_InStream *in);
MIMORA_API void S_UnlockInStream(S_InStream *in);

/*
 * Creates an output stream: into a file, into a callback, into a temporary file
 * or into memory, in this order of preference.
 *
 * fileName    not NULL: a file of this name, created or emptied.
 * context     not 0: first argument of the callbacks.
 * write       takes the bytes of a callback stream; with a context but without
 *             this function the stream takes nothing and has the error EINVAL.
 * seek, tell  of the callback stream; not needed.
 * bufferSize  bytes to hand on at once; below 1: 16,384. With neither a name
 *             nor a context: not 0 makes a temporary file, 0 a memory stream.
 *
 * Returns the stream, or NULL when memory is short. A file that cannot be
 *         created gives a stream that takes nothing; S_GetIOError tells why.
 * Memory:  the caller's; S_DestroyOutStream frees it. A temporary file stays
 *         and is the caller's to remove (S_GetOutStreamFileName).
 * Since:   1.0
 */
MIMORA_API S_OutStream *S_CreateOutStream(const char *fileName, S_Context context,
                                          S_WriteProc write, S_SeekProc seek,
                                          S_TellProc tell, int32_t bufferSize);

/*
 * Flushes and destroys an output stream and closes its file. Nobody can be told
 * any more that the flush failed: who has to know calls S_FlushBuffers first.
 *
 * out     the stream; NULL is ignored.
 *
 * Since:   1.0
 */
MIMORA_API void S_DestroyOutStream(S_OutStream *out);

/*
 * Tests whether the handle is one of an output stream, for the log only.
 * Since:   1.0
 */
MIMORA_API void S_CheckOutStream(S_OutStream *out);

/*
 * Finds the bytes of a memory stream.
 *
 * out     the stream.
 * buffer  receives the address of the bytes; a zero follows the last one.
 * length  receives their number, its low 32 bits.
 *
 * Returns 0; -1 when OUT is NULL. A null BUFFER or LENGTH is passed over.
 * Memory:  the bytes belong to the stream and move when more is written.
 * Since:   1.0
 */
MIMORA_API int32_t S_GetOutStreamBuffer(S_OutStream *out, const void **buffer,
                                        uint32_t *length);

/*
 * Copies the name of a stream's file; that of a stream without a file is empty.
 *
 * out          the stream.
 * destination  receives the name.
 * size         room in DESTINATION, in bytes.
 *
 * Returns 0 copied; 1 the name and its zero do not fit, or OUT is NULL:
 *         DESTINATION is then the empty text (when SIZE is not 0).
 * Since:   1.0
 */
MIMORA_API int32_t S_GetOutStreamFileName(S_OutStream *out, char *destination,
                                          uint32_t size);

/*
 * Tells the first error of an output stream, the last one of an input stream. It
 * is never taken back: what loads or copies from such a stream answers a failure,
 * even if the source could go on.
 *
 * stream  a stream of either kind.
 *
 * Returns 0 for none (also for an address that is no stream), else an errno
 *         value.
 * Since:   1.0
 */
MIMORA_API int32_t S_GetIOError(const void *stream);

/*
 * Tells how many bytes were written, those in the buffer included.
 *
 * out     the stream.
 *
 * Returns the number of bytes; -1 when OUT is NULL.
 * Since:   1.0
 */
MIMORA_API int64_t S_WritePos(S_OutStream *out);

/*
 * Hands everything that is buffered on to the file or callback.
 *
 * out     the stream.
 *
 * Returns 0, or the stream's error, an errno value (EBADF when OUT is NULL).
 * Since:   1.0
 */
MIMORA_API int32_t S_FlushBuffers(S_OutStream *out);

/*
 * Copies an input stream, from its present position to its end, into an output
 * stream and flushes that.
 *
 * Returns MIMORA_OK, MIMORA_E_READ, MIMORA_E_WRITE; MIMORA_E_NOT_OPEN when
 *         either is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t S_CopyFromInStreamToOutStream(S_InStream *in,
                                                 S_OutStream *out);

/* ------------------------------------------------------------------------
 * Procedures: transfer encodings (RFC 2045 6.7, 6.8)
 * --------------------------------------------------------------------- */

/*
 * Encodes an input stream as quoted-printable. Line ends, CR LF or LF, become
 * CR LF; other control bytes are escaped; a dot at the start of a line is too.
 *
 * in      read to its end.
 * out     receives the text and is flushed. Errors are latched in the streams.
 *
 * Since:   1.0
 */
MIMORA_API void P_EncodeQuotedPrintable(S_InStream *in, S_OutStream *out);

/*
 * Decodes quoted-printable. Blanks before a line end are dropped, line ends
 * become CR LF, and what is no proper escape is passed through.
 *
 * in      read to its end.
 * out     receives the bytes and is flushed. Errors are latched in the streams.
 *
 * Since:   1.0
 */
MIMORA_API void P_DecodeQuotedPrintable(S_InStream *in, S_OutStream *out);

/*
 * Encodes a file as base64 into another file.
 *
 * inputFile   name of the file to read.
 * outputFile  name of the file to write; created or emptied.
 * lineLength  characters a line, at most 80, each ended by CR LF; 0 or less: no
 *             line ends.
 *
 * Returns MIMORA_OK, MIMORA_E_OPEN_INPUT, MIMORA_E_OPEN_OUTPUT, MIMORA_E_READ,
 *         MIMORA_E_WRITE, MIMORA_E_UNCLASSIFIED.
 * Since:   1.0
 */
MIMORA_API int32_t P_EncodeBASE64(const char *inputFile, const char *outputFile,
                                  int32_t lineLength);

/*
 * Decodes a base64 file into another file. Characters outside the alphabet are
 * skipped, padding ends a line, missing padding at the end is supplied.
 *
 * Arguments and results are those of P_EncodeBASE64.
 * Since:   1.0
 */
MIMORA_API int32_t P_DecodeBASE64(const char *inputFile, const char *outputFile);

/* ------------------------------------------------------------------------
 * Procedures: character sets and file types
 * --------------------------------------------------------------------- */

/*
 * Tells the code page of a character set.
 *
 * charset  its name as mail writes it, in any case ("iso-8859-2", "utf-8").
 *          "us-ascii" is 1250: mail that claims it but has other bytes is mostly
 *          Central European.
 *
 * Returns the code page; 0 when the name is not known, or NULL.
 * Since:   1.0
 */
MIMORA_API uint32_t P_GetCodePage(const char *charset);

/*
 * Tells the code page that an HTML text says it is in: by a byte-order mark, an
 * XML declaration, or a META element; the first that is known counts.
 *
 * html  the markup.
 *
 * Returns the code page; 0 when none is declared or known, or HTML is NULL.
 * Since:   1.0
 */
MIMORA_API uint32_t P_GetHTMLCodePage(const char *html);

/* What P_Extension2MimeType answers besides 0. */
#define MIMORA_TYPE_UNKNOWN 2
#define MIMORA_TYPE_TOO_LONG 234

/*
 * Tells the content type of files with an extension: that of this machine (the
 * file that the setting Mime_Types or the environment variable
 * MIMORA_MIME_TYPES names, else /etc/mime.types and the shared MIME database,
 * read once), else that of P_GetExtensionFromMimeType's table.
 *
 * extension  with its dot, in any case: ".pdf".
 * buffer     receives the type; the empty text when there is none.
 * size       room in BUFFER, in bytes.
 *
 * Returns 0; MIMORA_TYPE_UNKNOWN, also for EXTENSION NULL or without its dot;
 *         MIMORA_TYPE_TOO_LONG when the type and its zero do not fit, or BUFFER
 *         is NULL.
 * Since:   1.0
 */
MIMORA_API int32_t P_Extension2MimeType(const char *extension, char *buffer,
                                        uint32_t size);

/*
 * Tells an extension for files of a content type, for naming an attachment that
 * has no name. The table is small on purpose and the same on every machine.
 *
 * contentType  without parameters, in any case: "text/plain".
 * buffer       receives the extension in upper case with its dot (".TXT"); the
 *              empty text for a type that is not in the table.
 * size         room in BUFFER, in bytes.
 *
 * Returns 0; 1 when the extension and its zero do not fit, or BUFFER is NULL:
 *         BUFFER is then left alone.
 * Since:   1.0
 */
MIMORA_API int32_t P_GetExtensionFromMimeType(const char *contentType,
                                              char *buffer, uint32_t size);

/* ------------------------------------------------------------------------
 * Procedures: compression and checksums
 * --------------------------------------------------------------------- */

/*
 * Compresses a block. The output is the same on every machine and in every
 * version, so compressed blocks can be stored and compared. It does not carry
 * its own size: keep that with it.
 *
 * in      the block; NULL is empty.
 * out     receives at most 1 + inSize + inSize / 256 bytes; must not overlap IN.
 * inSize  bytes in the block.
 *
 * Returns the number of bytes written; 0 for an empty block.
 * Memory:  works with up to 8 MB of its own; without them it takes longer.
 * Since:   1.0
 */
MIMORA_API uint32_t P_LZ_Compress(const void *in, void *out, uint32_t inSize);

/*
 * Uncompresses what P_LZ_Compress wrote. Call it with OUT NULL first: the answer
 * is the room that OUT needs. A damaged block does no harm: nothing behind it is
 * read, and what is written is never more than was counted. It stops where the
 * block ends, at a match that begins in front of the output, and in front of
 * what would make the output larger than 4 GiB. Where a match has the offset 0,
 * the bytes in OUT stay what they were.
 *
 * in      the compressed block; NULL is empty.
 * out     receives the bytes; must not overlap IN. NULL: they are only counted.
 * inSize  bytes in the compressed block.
 *
 * Returns the number of uncompressed bytes.
 * Since:   1.0
 */
MIMORA_API uint32_t P_LZ_Uncompress(const void *in, void *out, uint32_t inSize);

/*
 * Computes the CRC-32 of IEEE 802.3 (polynomial 0xEDB88320, start 0xFFFFFFFF)
 * without the inversion at the end: the complement of the usual value.
 *
 * data    the bytes; NULL is none.
 * length  their number, modulo 65,536: of 65,536 bytes none counts, of 70,000
 *         the first 4,464.
 *
 * Returns the checksum; 0xFFFFFFFF for no bytes. "123456789" gives 0x340BC6D9.
 * Since:   1.0
 */
MIMORA_API uint32_t P_CRC32(const void *data, uint32_t length);

/*
 * Computes the digest MD5 (RFC 1321) as text, in a form that is kept for the sake
 * of stored digests: bytes below 0x80 are two lower-case hexadecimal digits,
 * bytes from 0x80 on are "ff"; but the last byte, when it is one of these, is
 * "ffffff" and its two digits. P_MD5SumBin gives the digest itself.
 *
 * data    the bytes; NULL is none.
 * length  their number.
 * text    receives 32 or 38 characters and a zero: room for 39 bytes.
 *
 * Since:   1.0
 */
MIMORA_API void P_MD5Sum(const void *data, uint32_t length, char *text);

/*
 * Computes the digest MD5 (RFC 1321).
 *
 * data    the bytes; NULL is none.
 * length  their number.
 * digest  receives 16 bytes.
 *
 * Since:   1.0
 */
MIMORA_API void P_MD5SumBin(const void *data, uint32_t length,
                            unsigned char *digest);

/* ------------------------------------------------------------------------
 * Procedures: dates and URLs
 * --------------------------------------------------------------------- */

/*
 * Reads a date as mail headers write it: "Sat, 14 Nov 2009 10:20:30 +0100". What
 * stands in front of the day is passed over, seconds and zone may be missing.
 * Years of two digits are 1950 to 2049. A zone is an offset or one of 51 names
 * in upper case ("EST"); one that is not known counts as UTC. Days, minutes and
 * seconds beyond their range carry over.
 *
 * text    the date; NULL is no date.
 *
 * Returns seconds since 1970 began, UTC, modulo 2^32; 0 for a text that is no
 *         date and for a time before 1970. It writes no lines into the trace.
 * Since:   1.0
 */
MIMORA_API uint32_t P_RFC822DateTimeStr2time_t(const char *text);

/*
 * Writes a time as local date and time (TZ): "Sat, 14 Nov 2009 9:05:07 -0100".
 * The zone behind it is the one in force now, with the sign of what has to be
 * added to get UTC: "-" east of Greenwich. That is the opposite of what mail
 * means by it, and of what P_RFC822DateTimeStr2time_t reads.
 *
 * buffer  receives the text and its zero: room for 40 bytes.
 * time    seconds since 1970 began, UTC.
 *
 * Returns BUFFER.
 * Since:   1.0
 */
MIMORA_API char *P_time_t2RFC822DateTimeStr(char *buffer, uint32_t time);

/*
 * Replaces the characters ":% ?+&=" by a percent sign and two lower-case
 * hexadecimal digits; all other bytes stay. A sized copy (convention 4) that
 * tells by *SIZE alone whether it was made: it then keeps its value.
 *
 * input   the text; NULL is empty.
 * output  receives the text; NULL asks for the size only. It may be INPUT.
 * size    in:  room in OUTPUT, in bytes.
 *         out: bytes needed, zero included, when nothing was copied.
 *
 * Since:   1.0
 */
MIMORA_API void P_EscapeURL(const char *input, char *output, uint32_t *size);

/*
 * Undoes it: a percent sign and two characters become a byte, "+" a space. A
 * character that is no hexadecimal digit, or missing, counts as 0; a percent
 * sign at the very end stays.
 *
 * Arguments are those of P_EscapeURL.
 *
 * Since:   1.0
 */
MIMORA_API void P_UnEscapeURL(const char *input, char *output, uint32_t *size);

/* ------------------------------------------------------------------------
 * Procedures: signing and encrypting (S/MIME, RFC 8551)
 *
 * STORE is a directory: all PEM files in it (certificates, private keys, or
 * both), and all PKCS #12 files (.p12, .pfx), are read, subdirectories are not;
 * it is read anew in each call. NULL: what the environment variable
 * MIMORA_CERT_STORE or the line Cert_Store= of /etc/mimora.conf names, else
 * /etc/mimora/certs. A private key belongs to the certificate with its public
 * key, whatever the files are called. Files that are broken, or larger than
 * 4 MB, are passed over.
 *
 * A certificate is named by its id (the SHA-256 of its DER form in hexadecimal,
 * or a beginning of that which no other certificate has), or by an e-mail
 * address in it, in any case; one that is not printable ASCII does not count. Of
 * several with one address the best one counts: made for the purpose, valid now,
 * with its private key for signing, the newest.
 *
 * OpenSSL does the work in a context of its own: the host's providers, settings
 * and error queue are not touched. Passwords are not copied, copies of keys are
 * wiped when a call ends, and neither reaches the log. These functions may run
 * at the same time in any threads.
 * --------------------------------------------------------------------- */

#define MIMORA_ALGORITHM_ANY 0u
#define MIMORA_ALGORITHM_HASH 1u
#define MIMORA_ALGORITHM_CIPHER 2u

typedef struct P_Algorithm {
  char name[32];    /* "SHA256", "AES-256-CBC" */
  uint32_t keyBits; /* of a cipher's key; of a hash, of its digest */
  uint32_t kind;    /* MIMORA_ALGORITHM_HASH or MIMORA_ALGORITHM_CIPHER */
} P_Algorithm;

/* Bits of P_Certificate.flags. */
#define MIMORA_CERTIFICATE_KEY 1u          /* its private key is in the store */
#define MIMORA_CERTIFICATE_SIGN 2u         /* made for signing */
#define MIMORA_CERTIFICATE_ENCRYPT 4u      /* made for encrypting */
#define MIMORA_CERTIFICATE_OUTSIDE_TIME 8u /* not valid now */

/* Texts are UTF-8 and cut to fit. */
typedef struct P_Certificate {
  char id[65];
  char subject[256]; /* as in RFC 2253 */
  char issuer[256];
  char email[256];             /* the first one; empty when there is none */
  int64_t notBefore, notAfter; /* seconds since 1970 began, UTC */
  uint32_t flags;              /* MIMORA_CERTIFICATE_... */
} P_Certificate;

#define MIMORA_PURPOSE_ANY 0u
#define MIMORA_PURPOSE_SIGN 1u    /* may sign, and its private key is there */
#define MIMORA_PURPOSE_ENCRYPT 2u /* may encrypt */

/*
 * Lists the algorithms that P_SignData and P_EncryptData know.
 *
 * kind  MIMORA_ALGORITHM_...; ANY lists all.
 * list  receives the list, which P_FreeAlgorithmList takes back; NULL after a
 *       failure.
 *
 * Returns their number; -1 when KIND is none of these or LIST is NULL.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t P_GetAlgorithmList(uint32_t kind, P_Algorithm **list);

/* Takes back a list; NULL is ignored. Since: 1.0 */
MIMORA_API void P_FreeAlgorithmList(P_Algorithm *list);

/*
 * Lists the certificates of a store that serve a purpose, those that are not
 * valid now included. What only a password opens is missing, but a private key
 * with a password counts as that of the first certificate in its own file.
 *
 * store    see above.
 * purpose  MIMORA_PURPOSE_...; the list for any other number is empty.
 * list     receives the list, which P_FreeCertificatesList takes back; NULL after
 *          a failure.
 * count    receives the number of certificates in it.
 *
 * Returns MIMORA_OK; MIMORA_E_STORE; MIMORA_E_ENGINE; MIMORA_E_UNCLASSIFIED when
 *         LIST or COUNT is NULL.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t P_GetCertificatesList(const char *store, uint32_t purpose,
                                         P_Certificate **list, uint32_t *count);

/* Takes back a list; NULL is ignored. Since: 1.0 */
MIMORA_API void P_FreeCertificatesList(P_Certificate *list, uint32_t count);

/*
 * Describes a certificate to people: lines in English, UTF-8, with names and
 * addresses, serial number, time, key and use. The form of the text is not for
 * programs. A sized copy (convention 4).
 *
 * store        see above.
 * certificate  its name, see above.
 *
 * Returns 0 copied; 1 BUFFER is NULL or too small; -1 there is no such
 *         certificate, or no such store.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t P_SMimeGetCertInfo(const char *store, const char *certificate,
                                      char *buffer, uint32_t *size);

/*
 * Signs a MIME entity and writes it as another one, beginning with its
 * Content-Type line: what the message had as its Content- fields and its body is
 * to be signed, its other fields then go in front of what is written.
 *
 * message    the entity: header fields, an empty line, the body. All its line
 *            ends become CR LF first.
 * store      see above.
 * signer     the name of the certificate.
 * password   opens its private key; NULL: it needs none.
 * hashName   of P_GetAlgorithmList, in any case; NULL: SHA256.
 * detached   1: a multipart/signed, which everybody can read; 0: an
 *            application/x-pkcs7-mime, which survives careless mail software.
 * out        receives the entity. The signer's certificate is in it, and those
 *            of the store that lead to its root.
 *
 * Returns MIMORA_OK; before anything is written MIMORA_E_ALGORITHM,
 *         MIMORA_E_STORE, MIMORA_E_CERTIFICATE, MIMORA_E_CERTIFICATE_PURPOSE,
 *         MIMORA_E_CERTIFICATE_TIME, MIMORA_E_PRIVATE_KEY; MIMORA_E_PASSWORD: it
 *         opens no private key of the certificate, or not the file in which the
 *         certificate may be; MIMORA_E_ENGINE, also for 2 GiB and more;
 *         MIMORA_E_NOT_OPEN: OUT is NULL or not open. MIMORA_E_WRITE: OUT failed.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t P_SignData(const char *message, const char *store,
                              const char *signer, const char *password,
                              const char *hashName, int32_t detached,
                              S_OutStream *out);

/* P_EncryptData: pad as RFC 8017 7.1 has it where the recipient's key is RSA.
 * Safer, but not all mail software reads it. */
#define MIMORA_ENCRYPT_OAEP 1u

/* What failedRecipient receives when no recipient is to blame. */
#define MIMORA_NO_RECIPIENT 0xFFFFFFFFu

/*
 * Encrypts a MIME entity and writes it as another one (application/x-pkcs7-mime),
 * beginning with its Content-Type line. It may be one that P_SignData wrote.
 *
 * message          the entity, see P_SignData.
 * store            see above. No private key is needed.
 * recipients       names of certificates, zero-terminated, one behind the other,
 *                  with an empty one at the end.
 * cipherName       of P_GetAlgorithmList, in any case; "AES" is AES-CBC with
 *                  KEYBITS; NULL: AES-256-CBC, or AES-CBC with KEYBITS.
 * keyBits          size of the key; 0 when the name tells it.
 * flags            MIMORA_ENCRYPT_OAEP, or 0.
 * failedRecipient  receives the number of the recipient, counted from 0, that the
 *                  result is about, else MIMORA_NO_RECIPIENT; may be NULL.
 * out              receives the entity.
 *
 * Returns MIMORA_OK; before anything is written MIMORA_E_ALGORITHM,
 *         MIMORA_E_STORE, MIMORA_E_CERTIFICATE (also when there is no recipient),
 *         MIMORA_E_CERTIFICATE_PURPOSE, MIMORA_E_CERTIFICATE_TIME,
 *         MIMORA_E_ENGINE, also for 2 GiB and more; MIMORA_E_NOT_OPEN: OUT is
 *         NULL or not open. MIMORA_E_WRITE: OUT failed.
 * Throws:  std::bad_alloc.
 * Since:   1.0
 */
MIMORA_API int32_t P_EncryptData(const char *message, const char *store,
                                 const char *recipients, const char *cipherName,
                                 uint32_t keyBits, uint32_t flags,
                                 uint32_t *failedRecipient, S_OutStream *out);

/* ------------------------------------------------------------------------
 * Procedures: the library itself
 * --------------------------------------------------------------------- */

/*
 * Sets library-wide parameters. Known are NAMEPREFIXFORATTACHMENT ("att") and
 * NAMEPREFIXFORMESSAGE ("message"); others are ignored. They are kept for the
 * naming of saved messages and change no other result.
 *
 * list    texts KEY=VALUE, each zero-terminated, the last followed by an empty
 *         one. NULL changes nothing. Keys are compared without regard to case.
 *
 * Threads: call it before other threads use the library.
 * Since:   1.0
 */
MIMORA_API void P_SetGlobalParams(const char *list);

/*
 * Takes the trace over: every trace line goes to the callback instead of the
 * file, whether the log is switched on or not. Error lines still go to the file.
 *
 * callback  receives the lines; NULL gives the trace back to the file.
 *
 * Threads: any; it counts from the next line on.
 * Since:   1.0
 */
MIMORA_API void P_SetQQ_callback(P_TraceProc callback);

/*
 * Writes a line into the trace.
 *
 * text    the line, cut at 2,047 bytes, in the file those of its time stamp
 *         included. It is a format text without arguments: "%%" writes one
 *         percent sign, any other "%" stands for itself. NULL is ignored.
 *
 * Threads: any.
 * Since:   1.0
 */
MIMORA_API void P_QQ(const char *text);

/*
 * Returns 0, whatever the argument: the library is loaded and answers.
 * Since:   1.0
 */
MIMORA_API int32_t P_MIMORATest(int32_t ignored);

#ifdef __cplusplus
}
#endif

#endif /* MIMORA_MIMORA_H_ */
