# Grows one tree with rpart: Rscript rpart_peer.R FILE CASES NOMINAL KIND DEPTH LEAF SURROGATES
# COMPETITORS. Prints seconds and terminal nodes. The file is described in grow_peer.cc.

suppressPackageStartupMessages(library(rpart))
arguments <- commandArgs(TRUE)
cases <- as.integer(arguments[2])
nominal <- as.integer(arguments[3])
kind <- arguments[4]
numbers <- as.integer(arguments[5:8])

file <- file(arguments[1], "rb")
data <- as.data.frame(matrix(readBin(file, "double", cases * 21), cases))
close(file)
names(data) <- c(paste0("x", 0:19), "y")
for (i in seq_len(nominal)) data[[i]] <- factor(data[[i]])
if (kind == "class") data$y <- factor(as.integer(data$y > 0))

control <- rpart.control(maxdepth = numbers[1], minbucket = numbers[2], minsplit = 2 * numbers[2],
                         maxsurrogate = numbers[3], maxcompete = numbers[4], cp = -1, xval = 0)
taken <- system.time(fit <- rpart(y ~ ., data, control = control,
                                  method = if (kind == "class") "class" else "anova"))
cat(sprintf("%.3f %d\n", taken[["elapsed"]], sum(fit$frame$var == "<leaf>")))
